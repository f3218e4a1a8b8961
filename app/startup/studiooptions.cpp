#include "studiooptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

bool StudioOptions::parse(const QStringList &arguments, StudioOptions *options, QString *error)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QCoreApplication::translate("StudioOptions", "Студия администрирования Zeral"));
    parser.addHelpOption();
    const QCommandLineOption server(
        QStringLiteral("server"),
        QCoreApplication::translate("StudioOptions",
                                    "Подключиться к работающему серверу вместо встроенного."),
        QStringLiteral("HOST:PORT"));
    const QCommandLineOption db(
        QStringLiteral("db"),
        QCoreApplication::translate("StudioOptions", "Файл базы данных встроенного сервера."),
        QStringLiteral("FILE"));
    const QCommandLineOption demo(
        QStringLiteral("demo"),
        QCoreApplication::translate("StudioOptions", "Демонстрационные данные и пароль."));
    const QCommandLineOption plugins(
        QStringLiteral("plugins"),
        QCoreApplication::translate("StudioOptions", "Папка с модулями студии."),
        QStringLiteral("DIR"));
    const QCommandLineOption smtp(
        QStringLiteral("smtp"),
        QCoreApplication::translate("StudioOptions",
                                    "Почтовый сервер встроенного сервера: smtp://хост:порт или "
                                    "smtps://хост:порт."),
        QStringLiteral("URL"));
    parser.addOptions({server, db, demo, smtp, plugins});
    if (!parser.parse(arguments)) {
        *error = parser.errorText();
        return false;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        *error = parser.helpText();
        return false;
    }
    if (!parser.positionalArguments().isEmpty()) {
        *error = QCoreApplication::translate("StudioOptions", "Лишний аргумент: %1")
                     .arg(parser.positionalArguments().constFirst());
        return false;
    }

    StudioOptions result;
    if (parser.isSet(server)) {
        const QString value = parser.value(server);
        if (!parseServerAddress(value, &result.serverHost, &result.serverPort)) {
            *error = QCoreApplication::translate("StudioOptions",
                                                 "Адрес сервера «%1» не подходит: укажите "
                                                 "его как ХОСТ:ПОРТ, например 127.0.0.1:7700.")
                         .arg(value);
            return false;
        }
        if (parser.isSet(db) || parser.isSet(demo) || parser.isSet(smtp)) {
            *error = QCoreApplication::translate("StudioOptions",
                                                 "--db, --demo и --smtp относятся к встроенному "
                                                 "серверу и не сочетаются с --server.");
            return false;
        }
    }
    result.demo = parser.isSet(demo);
    if (parser.isSet(smtp)) {
        const QString url = parser.value(smtp).trimmed();
        if (!url.startsWith(QLatin1String("smtp://"))
            && !url.startsWith(QLatin1String("smtps://"))) {
            *error = QCoreApplication::translate("StudioOptions",
                                                 "Адрес почтового сервера «%1» не подходит: "
                                                 "укажите его как smtp://хост:порт или "
                                                 "smtps://хост:порт.")
                         .arg(url);
            return false;
        }
        result.smtpUrl = url;
    }
    result.databasePath = parser.isSet(db) ? parser.value(db) : defaultDatabasePath(result.demo);
    result.pluginDir = parser.isSet(plugins) ? parser.value(plugins) : defaultPluginDir();
    *options = result;
    return true;
}

bool StudioOptions::parseServerAddress(const QString &text, QString *host, quint16 *port)
{
    const QString trimmed = text.trimmed();
    const int colon = trimmed.lastIndexOf(QLatin1Char(':'));
    bool portOk = false;
    const uint number = colon > 0 ? trimmed.midRef(colon + 1).toUInt(&portOk) : 0;
    if (!portOk || number == 0 || number > 65535)
        return false;
    QString name = trimmed.left(colon);
    // An IPv6 address is written in brackets before its port.
    if (name.startsWith(QLatin1Char('[')) && name.endsWith(QLatin1Char(']')))
        name = name.mid(1, name.size() - 2);
    if (name.isEmpty() || name.contains(QLatin1Char(' ')))
        return false;
    *host = name;
    *port = quint16(number);
    return true;
}

QString StudioOptions::formatServerAddress(const QString &host, quint16 port)
{
    const bool ipv6 = host.contains(QLatin1Char(':'));
    return (ipv6 ? QLatin1Char('[') + host + QLatin1Char(']') : host) + QLatin1Char(':')
           + QString::number(port);
}

QString StudioOptions::defaultDatabasePath(bool demo)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    return QDir(folder).filePath(demo ? QStringLiteral("demo.db") : QStringLiteral("zeral.db"));
}

QString StudioOptions::defaultPluginDir()
{
    return QDir(QCoreApplication::applicationDirPath())
        .absoluteFilePath(QStringLiteral("../plugins"));
}
