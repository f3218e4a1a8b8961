#include "snapshotpage.h"

#include <QDateTime>
#include <QVarLengthArray>

#include <algorithm>
#include <cstring>

namespace zeral::server {

namespace {

// The digits of `text` from `at` on as a number; -1 unless all `count` are digits.
int digits(const char *text, int at, int count)
{
    int value = 0;
    for (int i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return -1;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

// A time stamp as the server stores it ("2024-03-01T08:00:00.250Z", a UTC time written with
// Qt::ISODateWithMs), read as QDateTime::fromString(text, Qt::ISODateWithMs) reads it; an
// invalid QDateTime for any other form, which is then left to that parser.
QDateTime storedStamp(const char *text, int size)
{
    if (size != 24 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':'
        || text[16] != ':' || text[19] != '.' || text[23] != 'Z')
        return {};
    const QDate date(digits(text, 0, 4), digits(text, 5, 2), digits(text, 8, 2));
    const int hour = digits(text, 11, 2);
    const int minute = digits(text, 14, 2);
    const int second = digits(text, 17, 2);
    const int msec = digits(text, 20, 3);
    // QTime's constructor takes any negative minute or second as "not given".
    if (!date.isValid() || hour < 0 || minute < 0 || second < 0 || msec < 0)
        return {};
    const QTime time(hour, minute, second, msec);
    return time.isValid() ? QDateTime(date, time, Qt::UTC) : QDateTime();
}

} // namespace

void SnapshotPage::writeStamp(LastStamp *last, wire::ByteWriter &out, Text text)
{
    const int size = text.bytes ? text.size : 0;
    if (last->written.isEmpty() || last->text.size() != size
        || std::memcmp(last->text.constData(), text.bytes, size_t(size)) != 0) {
        last->text = QByteArray(text.bytes, size);
        last->written.clear();
        QDateTime stamp;
        if (size > 0) {
            stamp = storedStamp(text.bytes, size);
            if (!stamp.isValid())
                stamp = QDateTime::fromString(QString::fromUtf8(text.bytes, size),
                                              Qt::ISODateWithMs);
        }
        wire::ByteWriter(&last->written).dateTime(stamp);
    }
    out.raw(last->written.constData(), last->written.size());
}

void SnapshotPage::addObject(TYPE_ID uid, Text type, TYPE_ID parent, quint32 reserved, Text stamp)
{
    Object object;
    object.uid = uid;
    object.headAt = m_headsOut.size();
    m_headsOut.put<quint32>(uid);
    m_headsOut.utf8(type.bytes, type.size);
    m_headsOut.put<quint32>(parent);
    m_headsOut.put<quint32>(reserved);
    object.stampAt = m_headsOut.size();
    writeStamp(&m_objectStamp, m_headsOut, stamp);
    m_objects.append(object);
}

void SnapshotPage::writeKey(Text key)
{
    const int count = m_keys.texts.size();
    for (int i = 0; i < count; ++i) {
        const int at = (m_keys.hint + i) % count;
        const QByteArray &known = m_keys.texts.at(at).first;
        if (known.size() == key.size && key.bytes
            && std::memcmp(known.constData(), key.bytes, size_t(key.size)) == 0) {
            m_keys.hint = at + 1;
            const QByteArray &written = m_keys.texts.at(at).second;
            m_parametersOut.raw(written.constData(), written.size());
            return;
        }
    }
    QByteArray written;
    wire::ByteWriter(&written).utf8(key.bytes, key.size);
    m_parametersOut.raw(written.constData(), written.size());
    // A page with more distinct names than a few dozen writes the others each time.
    if (key.bytes && count < 64)
        m_keys.texts.append({QByteArray(key.bytes, key.size), written});
}

SnapshotPage::Object *SnapshotPage::objectAt(int *at, TYPE_ID uid)
{
    while (*at < m_objects.size() && m_objects.at(*at).uid < uid)
        ++*at;
    return *at < m_objects.size() && m_objects.at(*at).uid == uid ? &m_objects[*at] : nullptr;
}

void SnapshotPage::addParameter(TYPE_ID uid, Text key, Text value)
{
    Object *object = objectAt(&m_parameterAt, uid);
    if (!object)
        return;
    if (object->parameterCount == 0)
        object->parameters.begin = m_parametersOut.size();
    writeKey(key);
    m_parametersOut.utf8(value.bytes, value.size);
    object->parameters.end = m_parametersOut.size();
    ++object->parameterCount;
}

void SnapshotPage::addLink(LinkEnd end, TYPE_ID child, TYPE_ID parent, quint32 linkType,
                           quint32 reserved, Text validFrom, Text validTo)
{
    const int side = int(end);
    Object *object = objectAt(&m_linkAt[side], end == LinkEnd::Child ? child : parent);
    if (!object)
        return;
    QVector<Link> &links = m_links[side];
    Range &range = object->links[side];
    if (range.begin == range.end)
        range.begin = links.size();
    Link link;
    link.type = linkType;
    link.bytes.begin = m_linksOut.size();
    m_linksOut.put<quint32>(child);
    m_linksOut.put<quint32>(parent);
    m_linksOut.put<quint32>(linkType);
    m_linksOut.put<quint32>(reserved);
    writeStamp(&m_linkFrom, m_linksOut, validFrom);
    writeStamp(&m_linkTo, m_linksOut, validTo);
    link.bytes.end = m_linksOut.size();
    links.append(link);
    range.end = links.size();
}

void SnapshotPage::appendTo(QByteArray *out) const
{
    out->reserve(out->size() + 4 + m_headsOut.size() + m_parametersOut.size() + m_linksOut.size()
                 + 12 * m_objects.size() + 4 * (m_links[0].size() + m_links[1].size()));
    wire::ByteWriter bytes(out);
    bytes.put<quint32>(quint32(m_objects.size()));
    for (int i = 0; i < m_objects.size(); ++i) {
        const Object &object = m_objects.at(i);
        const int headEnd
            = i + 1 < m_objects.size() ? m_objects.at(i + 1).headAt : m_headsOut.size();
        bytes.raw(m_heads.constData() + object.headAt, object.stampAt - object.headAt);
        bytes.put<quint32>(object.parameterCount);
        bytes.raw(m_parameters.constData() + object.parameters.begin,
                  object.parameters.end - object.parameters.begin);
        bytes.raw(m_heads.constData() + object.stampAt, headEnd - object.stampAt);
        // Its parents (the links where it is the child), then its children.
        for (const LinkEnd end : {LinkEnd::Child, LinkEnd::Parent}) {
            // QDataStream writes a QMultiMap from its last entry to its first: link types
            // descending, those of one type in the order they were inserted, which a reader's
            // inserts restore.
            const QVector<Link> &links = m_links[int(end)];
            const Range &range = object.links[int(end)];
            QVarLengthArray<int, 8> order;
            for (int at = range.begin; at < range.end; ++at)
                order.append(at);
            std::stable_sort(order.begin(), order.end(), [&links](int left, int right) {
                return links.at(left).type > links.at(right).type;
            });
            bytes.put<quint32>(quint32(order.size()));
            for (const int at : order) {
                const Link &link = links.at(at);
                bytes.put<quint32>(link.type);
                bytes.raw(m_linkBytes.constData() + link.bytes.begin,
                          link.bytes.end - link.bytes.begin);
            }
        }
    }
}

} // namespace zeral::server
