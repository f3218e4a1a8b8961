#pragma once

#include <shared/bytewriter.h>
#include <shared/types.h>

#include <QByteArray>
#include <QPair>
#include <QVector>

namespace zeral::server {

// One page of a dataset's snapshot, gathered from the rows of its statements and written as
// the answer's QList<ObjectInfo>, without making the objects: no hash of parameters, no
// QString for each value. Texts go from the database's UTF-8 straight to the wire's UTF-16,
// and a time stamp in the form the server stores is read without QDateTime's parser. The
// rows of one statement come in the page's uid order, so each finds its object by walking
// along; the page is put together in the wire's order at the end.
class SnapshotPage
{
public:
    SnapshotPage() = default;
    SnapshotPage(const SnapshotPage &) = delete;
    SnapshotPage &operator=(const SnapshotPage &) = delete;

    // A text column as a statement gives it: UTF-8 bytes, nullptr for NULL.
    struct Text
    {
        const char *bytes = nullptr;
        int size = 0;
    };
    // Which end of a link the page's object is.
    enum class LinkEnd { Child, Parent };

    // The objects first, in ascending uid order.
    void addObject(TYPE_ID uid, Text type, TYPE_ID parent, quint32 reserved, Text stamp);
    int size() const { return m_objects.size(); }
    TYPE_ID lastUid() const { return m_objects.isEmpty() ? 0 : m_objects.constLast().uid; }

    // Then their parameters and links, each kind in ascending uid order of the page's object;
    // rows of other objects are passed over.
    void addParameter(TYPE_ID uid, Text key, Text value);
    // Links of one type keep the order they come in, as a QMultiMap filled in that order does.
    void addLink(LinkEnd end, TYPE_ID child, TYPE_ID parent, quint32 linkType, quint32 reserved,
                 Text validFrom, Text validTo);

    // The page as QDataStream writes a QList<ObjectInfo> in the system's stream settings; the
    // parameters' order may differ, which reads back as the same hash.
    void appendTo(QByteArray *out) const;

private:
    struct Range
    {
        int begin = 0;
        int end = 0;
    };
    struct Object
    {
        TYPE_ID uid = 0;
        int headAt = 0; // in m_heads: uid, type, parent and reserved, then the time stamp
        int stampAt = 0;
        Range parameters; // bytes in m_parameters
        quint32 parameterCount = 0;
        Range links[2]; // entries of m_links, by LinkEnd
    };
    struct Link
    {
        quint32 type = 0;
        Range bytes; // in m_linkBytes: the link as QDataStream writes an _INHERIT_DATA
    };
    // The last stamp read, as text and as written: rows written together share it.
    struct LastStamp
    {
        QByteArray text;
        QByteArray written;
    };

    // The same few parameter names come on every object, in the same order: each is written
    // once, and the one after the last found is looked at first.
    struct KnownKeys
    {
        QVector<QPair<QByteArray, QByteArray>> texts; // as read, as written
        int hint = 0;
    };

    static void writeStamp(LastStamp *last, wire::ByteWriter &out, Text text);
    void writeKey(Text key);
    // The object of `uid` from `*at` on, or nullptr if the page hasn't it.
    Object *objectAt(int *at, TYPE_ID uid);

    QVector<Object> m_objects;
    QByteArray m_heads;
    wire::ByteWriter m_headsOut{&m_heads};
    QByteArray m_parameters;
    wire::ByteWriter m_parametersOut{&m_parameters};
    QVector<Link> m_links[2];
    QByteArray m_linkBytes;
    wire::ByteWriter m_linksOut{&m_linkBytes};
    KnownKeys m_keys;
    LastStamp m_objectStamp;
    LastStamp m_linkFrom;
    LastStamp m_linkTo;
    int m_parameterAt = 0;
    int m_linkAt[2] = {0, 0};
};

} // namespace zeral::server
