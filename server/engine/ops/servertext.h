#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <type_traits>

class QTranslator;

namespace zeral::server {

// A sentence of the server for an operator: its Russian source text and the values of its
// %1, %2, ... The sources are marked with QT_TRANSLATE_NOOP("ZRServer", ...) so that lupdate
// puts them into the server's catalogue; the text is put together only when it is known whom
// it goes to, since one server speaks to operators of several languages at once. The pattern
// is translated first and the values put in after, so a translation may move them about.
class ServerText
{
public:
    // The context of every text of the server in its catalogue.
    static constexpr char Context[] = "ZRServer";

    ServerText() = default;
    // `source`: a literal marked with QT_TRANSLATE_NOOP("ZRServer", ...), UTF-8; it must
    // outlive the text (a literal does).
    // Not explicit: a reason without values is passed as the marked literal itself.
    ServerText(const char *source)
        : m_source(source ? QByteArray::fromRawData(source, int(qstrlen(source))) : QByteArray())
    {}

    ServerText arg(const QString &value) const;
    ServerText arg(const QString &first, const QString &second) const;
    template<class Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
    ServerText arg(Number value) const
    {
        return arg(QString::number(value));
    }

    bool isEmpty() const { return m_source.isEmpty(); }
    const char *source() const { return m_source.isNull() ? nullptr : m_source.constData(); }
    // The sentence in the language of `translator`; in Russian, the language of the sources,
    // without one or where the catalogue has no translation of it.
    QString toString(const QTranslator *translator = nullptr) const;

    // Puts `values` into the %1 ... %99 of `pattern` in one pass, so that a value holding "%2"
    // (a login may) is not taken for a place of the next one.
    static QString fill(const QString &pattern, const QStringList &values);

    // To another server over the database: the source and the values, to be put into the
    // words of a session held there.
    friend QDataStream &operator<<(QDataStream &out, const ServerText &text);
    friend QDataStream &operator>>(QDataStream &in, ServerText &text);

private:
    QByteArray m_source; // a literal's bytes, not copied, or a source read from another server
    QStringList m_values;
};

} // namespace zeral::server

// Handed from the mail sender's thread to the engine's.
Q_DECLARE_METATYPE(zeral::server::ServerText)
