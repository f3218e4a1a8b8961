#pragma once

#include <QByteArray>
#include <QDataStream>

// A QDataStream with the stream settings of the whole system. Every payload on the wire,
// in both directions, is read and written through one of these.
class ZRDataStream : public QDataStream
{
public:
    static constexpr QDataStream::Version StreamVersion = QDataStream::Qt_5_15;
    static constexpr QDataStream::ByteOrder StreamByteOrder = QDataStream::BigEndian;

    explicit ZRDataStream(const QByteArray &data);            // reads
    ZRDataStream(QByteArray *data, QIODevice::OpenMode mode); // writes, or reads in place
    explicit ZRDataStream(QIODevice *device);

    // Gives any QDataStream the settings above: the one place that sets them.
    static void applySettings(QDataStream &stream);

    // A payload holding the values one after the other.
    template<class... Values>
    static QByteArray pack(const Values &...values)
    {
        QByteArray bytes;
        ZRDataStream out(&bytes, QIODevice::WriteOnly);
        (out << ... << values);
        return bytes;
    }
};
