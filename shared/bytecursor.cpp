#include "bytecursor.h"

#include <QBuffer>

#include <limits>

namespace zeral::wire {

namespace {
constexpr quint32 NullLength = 0xffffffffu;
constexpr qint64 UnixEpochJulianDay = 2440588; // 1970-01-01
constexpr qint64 MSecsPerDay = 86400000;
} // namespace

QBuffer *ByteCursor::bufferOf(QDataStream &in)
{
    auto *buffer = qobject_cast<QBuffer *>(in.device());
    if (!buffer || !buffer->isOpen() || in.status() != QDataStream::Ok
        || in.byteOrder() != QDataStream::BigEndian || in.version() < QDataStream::Qt_5_2)
        return nullptr;
    return buffer;
}

void ByteCursor::fail(QDataStream::Status why)
{
    if (status == QDataStream::Ok)
        status = why;
    m_at = m_end;
}

quint32 ByteCursor::count()
{
    const quint32 n = take<quint32>();
    if (good() && qint64(n) > left())
        fail(QDataStream::ReadCorruptData);
    return good() ? n : 0;
}

quint32 ByteCursor::length()
{
    const quint32 n = take<quint32>();
    if (!good() || n == NullLength)
        return NullLength;
    if (qint64(n) > left()) {
        fail(QDataStream::ReadPastEnd);
        return NullLength;
    }
    return n;
}

QString ByteCursor::text(StringPool *pool, bool *added)
{
    if (added)
        *added = false;
    const quint32 bytes = length();
    if (bytes == NullLength)
        return QString();
    if (bytes & 1) {
        fail(QDataStream::ReadCorruptData);
        return QString();
    }
    const uchar *data = m_at;
    m_at += bytes;
    const int units = int(bytes / 2);
    if (units == 0)
        return QLatin1String("");
    if (pool)
        return pool->fromUtf16BigEndian(data, units, added);
    QString text(units, Qt::Uninitialized);
    qFromBigEndian<ushort>(data, units, text.data());
    return text;
}

QByteArray ByteCursor::bytes()
{
    const quint32 n = length();
    if (n == NullLength)
        return QByteArray();
    const char *data = reinterpret_cast<const char *>(m_at);
    m_at += n;
    return n == 0 ? QByteArray("") : QByteArray(data, int(n));
}

QDateTime ByteCursor::dateTime()
{
    const qint64 julianDay = take<qint64>();
    const quint32 msecs = take<quint32>();
    const qint8 timeSpec = take<qint8>();
    if (!good())
        return QDateTime();
    // A null date or time is written as values out of range, which read back as null.
    const QDate date = QDate::fromJulianDay(julianDay);
    const QTime time = msecs == std::numeric_limits<quint32>::max()
                           ? QTime()
                           : QTime::fromMSecsSinceStartOfDay(int(msecs));
    switch (timeSpec) {
    case Qt::LocalTime:
        return QDateTime(date, time, Qt::LocalTime);
    case Qt::UTC:
        // What the server sends: counted from the epoch at once, without taking the date and
        // the time apart again.
        if (date.isValid() && time.isValid())
            return QDateTime::fromMSecsSinceEpoch(
                (julianDay - UnixEpochJulianDay) * MSecsPerDay + msecs, Qt::UTC);
        return QDateTime(date, time, Qt::UTC);
    case Qt::OffsetFromUTC: {
        const qint32 offset = take<qint32>();
        return good() ? QDateTime(date, time, Qt::OffsetFromUTC, offset) : QDateTime();
    }
    default:
        fallBack = true;
        return QDateTime();
    }
}

} // namespace zeral::wire
