#include <app/startup/studiocontroller.h>
#include <app/startup/studiooptions.h>
#include <app/startup/studiosettings.h>

#include <host/core/settings.h>

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <cstdio>

namespace {

// The studio's own texts are Russian; the language chosen decides Qt's standard texts, the
// formats of dates and numbers, and the language of mails the screens send.
void installLanguage(QApplication &app)
{
    const QString key = QLatin1String(studio::settings::Language);
    QString language = Settings::value(key).toString();
    if (language.isEmpty()) {
        language = QStringLiteral("ru_RU");
        Settings::setValue(key, language);
    }
    QLocale::setDefault(QLocale(language));
    auto *qtTexts = new QTranslator(&app);
    if (qtTexts->load(QLocale(language), QStringLiteral("qtbase"), QStringLiteral("_"),
                      QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(qtTexts);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Zeral"));
    QApplication::setApplicationName(QStringLiteral("zr-studio"));
    QApplication::setApplicationDisplayName(QStringLiteral("Zeral"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));
    QApplication::setQuitOnLastWindowClosed(false); // the studio ends when it says so

    StudioOptions options;
    QString error;
    if (!StudioOptions::parse(app.arguments(), &options, &error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return error.startsWith(QLatin1String("Usage")) ? 0 : 1;
    }
    installLanguage(app);

    StudioController studio(options);
    QObject::connect(&studio, &StudioController::finished, &app, &QApplication::exit,
                     Qt::QueuedConnection);
    studio.start();
    return app.exec();
}
