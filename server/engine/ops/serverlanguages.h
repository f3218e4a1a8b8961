#pragma once

#include <server/engine/ops/servertext.h>

#include <QHash>
#include <QSet>
#include <QString>

#include <memory>

class QTranslator;

namespace zeral::server {

// The catalogues of the server's texts, "zrserver_<language>.qm" in one folder: one translator
// per language found there, loaded once at the start. A session names its language ("en_GB";
// empty or Russian: the sources); its texts are made with its translator, never with the
// process-wide ones, since sessions of several languages are served side by side. A language
// without a catalogue gets Russian, and a warning the first time it is asked for.
class ServerLanguages
{
public:
    static constexpr char CatalogueName[] = "zrserver";

    ServerLanguages();
    ~ServerLanguages();

    // Loads every catalogue of `folder`; returns their languages ("en", "de_AT").
    QStringList load(const QString &folder);
    // The translator for `language`: of the whole name, else of the language alone ("en" for
    // "en_GB"); null for Russian and for a language without a catalogue.
    const QTranslator *translator(const QString &language);
    QString render(const ServerText &text, const QString &language)
    {
        return text.toString(translator(language));
    }

private:
    QString m_folder;
    QHash<QString, std::shared_ptr<QTranslator>> m_translators; // by the catalogue's language
    QSet<QString> m_missingTold; // languages asked for without a catalogue, warned of once
};

} // namespace zeral::server
