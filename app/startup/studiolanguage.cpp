#include "studiolanguage.h"

#include <app/startup/studiosettings.h>

#include <host/core/settings.h>

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QTranslator>

Q_LOGGING_CATEGORY(lcLanguage, "zr.studio.language")

const QStringList &StudioLanguage::catalogues()
{
    static const QStringList names
        = {QStringLiteral("zrstudio"), QStringLiteral("zrhost"), QStringLiteral("userctl")};
    return names;
}

QString StudioLanguage::defaultCatalogueDir()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath()
                           + QLatin1String("/../translations"));
}

QString StudioLanguage::configuredLanguage()
{
    const QString key = QLatin1String(studio::settings::Language);
    QString language = Settings::value(key).toString();
    if (language.isEmpty()) {
        language = QStringLiteral("ru_RU");
        Settings::setValue(key, language);
    }
    return language;
}

StudioLanguage::StudioLanguage(QObject *parent)
    : QObject(parent)
{}

StudioLanguage::~StudioLanguage()
{
    removeTranslators();
}

QStringList StudioLanguage::install(const QString &language, const QString &catalogueDir)
{
    removeTranslators();
    const QLocale locale(language);
    QLocale::setDefault(locale);

    auto *qtTexts = new QTranslator(this);
    if (qtTexts->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                      QLibraryInfo::location(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(qtTexts);
        m_translators.append(qtTexts);
    } else {
        delete qtTexts;
    }

    QStringList missing;
    if (locale.language() == QLocale::Russian)
        return missing;
    for (const QString &name : catalogues()) {
        auto *catalogue = new QTranslator(this);
        if (catalogue->load(locale, name, QStringLiteral("_"), catalogueDir)) {
            QCoreApplication::installTranslator(catalogue);
            m_translators.append(catalogue);
            continue;
        }
        delete catalogue;
        const QString file = name + QLatin1Char('_') + locale.name() + QLatin1String(".qm");
        qCWarning(lcLanguage).noquote()
            << "no catalogue" << file << "in" << QDir::toNativeSeparators(catalogueDir)
            << "(nor one for the language alone): its texts stay in Russian";
        missing.append(file);
    }
    return missing;
}

void StudioLanguage::removeTranslators()
{
    for (QTranslator *translator : qAsConst(m_translators)) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
    m_translators.clear();
}
