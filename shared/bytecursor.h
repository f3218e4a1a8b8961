#pragma once

#include <shared/stringpool.h>

#include <QBuffer>
#include <QByteArray>
#include <QDataStream>
#include <QDateTime>
#include <QString>
#include <QtEndian>

namespace zeral::wire {

// Reads values straight from the bytes of an in-memory stream in the system's settings
// (big-endian, Qt 5.15 formats), as QDataStream would, without going through its device
// value by value. A read past the end or a malformed value stops it with the status
// QDataStream would have; `fallBack` asks the caller for QDataStream's own reader, for a
// value this one doesn't decode (a date in a named time zone).
class ByteCursor
{
public:
    // Runs `read` over the stream's bytes from its position on, and moves the stream past
    // what it read, or fails the stream with the cursor's status. A stream that can't be read
    // in place (another device, other settings) and one where the cursor asked for it go to
    // `slow`, QDataStream's own reader, from the same position.
    template<class Read, class Slow>
    static QDataStream &readInPlace(QDataStream &in, Read &&read, Slow &&slow)
    {
        QBuffer *buffer = bufferOf(in);
        if (!buffer)
            return slow();
        const qint64 start = buffer->pos();
        const QByteArray &data = buffer->data();
        const auto *begin = reinterpret_cast<const uchar *>(data.constData());
        ByteCursor cursor(begin + start, begin + data.size());
        read(cursor);
        if (cursor.fallBack) {
            buffer->seek(start);
            return slow();
        }
        if (!cursor.good()) {
            in.setStatus(cursor.status);
            buffer->seek(data.size());
            return in;
        }
        buffer->seek(start + cursor.consumed());
        return in;
    }

    ByteCursor(const uchar *begin, const uchar *end)
        : m_begin(begin)
        , m_at(begin)
        , m_end(end)
    {}

    QDataStream::Status status = QDataStream::Ok;
    bool fallBack = false;

    bool good() const { return status == QDataStream::Ok && !fallBack; }
    qint64 consumed() const { return m_at - m_begin; }
    qint64 left() const { return m_end - m_at; }

    template<class T>
    T take()
    {
        if (!good() || left() < qint64(sizeof(T))) {
            fail(QDataStream::ReadPastEnd);
            return T{};
        }
        const T value = qFromBigEndian<T>(m_at);
        m_at += sizeof(T);
        return value;
    }

    // A count of elements of at least one byte each, which the bytes left must be able to hold.
    quint32 count();
    // Pooled if a pool is given; `added` tells whether the text was new to it.
    QString text(StringPool *pool = nullptr, bool *added = nullptr);
    QByteArray bytes();
    QDateTime dateTime();

private:
    static QBuffer *bufferOf(QDataStream &in);
    void fail(QDataStream::Status why);
    // The length of a text or byte array, or NullLength; checked against the bytes left.
    quint32 length();

    const uchar *m_begin;
    const uchar *m_at;
    const uchar *m_end;
};

} // namespace zeral::wire
