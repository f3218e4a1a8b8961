#include "servertext.h"

#include <QTranslator>

namespace zeral::server {

ServerText ServerText::arg(const QString &value) const
{
    ServerText text = *this;
    text.m_values.append(value);
    return text;
}

ServerText ServerText::arg(const QString &first, const QString &second) const
{
    return arg(first).arg(second);
}

QString ServerText::toString(const QTranslator *translator) const
{
    if (isEmpty())
        return {};
    QString pattern = translator ? translator->translate(Context, m_source.constData()) : QString();
    if (pattern.isEmpty())
        pattern = QString::fromUtf8(m_source);
    return fill(pattern, m_values);
}

QString ServerText::fill(const QString &pattern, const QStringList &values)
{
    QString result;
    result.reserve(pattern.size());
    for (int i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        if (c != QLatin1Char('%') || i + 1 >= pattern.size() || !pattern.at(i + 1).isDigit()) {
            result.append(c);
            continue;
        }
        int end = i + 1;
        int number = 0;
        while (end < pattern.size() && end < i + 3 && pattern.at(end).isDigit())
            number = number * 10 + pattern.at(end++).digitValue();
        if (number >= 1 && number <= values.size()) {
            result.append(values.at(number - 1));
            i = end - 1;
        } else {
            result.append(c); // not a place of a value given: left as it stands
        }
    }
    return result;
}

QDataStream &operator<<(QDataStream &out, const ServerText &text)
{
    return out << text.m_source << text.m_values;
}

QDataStream &operator>>(QDataStream &in, ServerText &text)
{
    QByteArray source;
    QStringList values;
    in >> source >> values;
    if (in.status() == QDataStream::Ok) {
        text.m_source = source;
        text.m_values = values;
    }
    return in;
}

} // namespace zeral::server
