#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

class QTranslator;

// Puts the operator's language into effect for the whole process, before any widget is made:
// the formats of dates and numbers, Qt's standard texts and, for a language other than
// Russian (the language of the sources), the catalogues of the studio, the host libraries
// and the users screen. A catalogue that isn't there leaves its texts in Russian and is
// named in a warning; the studio starts all the same. The translators stay installed as long
// as this object lives.
class StudioLanguage : public QObject
{
    Q_OBJECT
public:
    // The catalogues the studio loads, "<name>_<language>.qm".
    static const QStringList &catalogues();
    // <program folder>/../translations: build/translations in a build.
    static QString defaultCatalogueDir();
    // The language the settings choose ("mainwindow/language"); Russian when none is set,
    // which is then written so the menu shows it.
    static QString configuredLanguage();

    explicit StudioLanguage(QObject *parent = nullptr);
    ~StudioLanguage() override;

    // Installs `language` ("ru_RU", "en_GB", ...) from `catalogueDir`. Returns the file names
    // of the catalogues it didn't find there; empty for Russian.
    QStringList install(const QString &language,
                        const QString &catalogueDir = defaultCatalogueDir());

private:
    void removeTranslators();

    QList<QTranslator *> m_translators;
};
