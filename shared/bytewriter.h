#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QtEndian>

namespace zeral::wire {

// Appends values to a byte array as QDataStream writes them in the system's settings
// (big-endian, Qt 5.15 formats), straight into the bytes instead of value by value through
// a device: the writing side of ByteCursor. The array grows ahead of what is written and is
// cut to it when the writer goes, so nothing else may append to it meanwhile.
class ByteWriter
{
public:
    explicit ByteWriter(QByteArray *out)
        : m_out(out)
        , m_at(out->size())
    {}
    ~ByteWriter() { m_out->resize(m_at); }
    ByteWriter(const ByteWriter &) = delete;
    ByteWriter &operator=(const ByteWriter &) = delete;

    template<class T>
    void put(T value)
    {
        qToBigEndian<T>(value, room(int(sizeof(T))));
        m_at += int(sizeof(T));
    }

    // Overwrites a value put before at `at`, e.g. a count known only after the elements.
    template<class T>
    void putAt(int at, T value)
    {
        qToBigEndian<T>(value, m_out->data() + at);
    }

    // The bytes written so far, those before the writer included.
    int size() const { return m_at; }
    const char *data() const { return m_out->constData(); }
    // Bytes already in the stream's form.
    void raw(const char *bytes, int size);

    void text(const QString &text);
    // The same bytes as text(QString::fromUtf8(utf8, size)), without the QString: UTF-8 as a
    // database gives it goes straight to UTF-16. A null `utf8` (an SQL NULL) is a null text.
    void utf8(const char *utf8, int size);
    // A time in a named zone carries the zone's own record: QDataStream writes that one.
    void dateTime(const QDateTime &stamp);

private:
    // Where `size` more bytes go.
    char *room(int size)
    {
        if (m_out->size() - m_at < size)
            grow(size);
        return m_out->data() + m_at;
    }
    void grow(int size);

    QByteArray *m_out;
    int m_at;
};

} // namespace zeral::wire
