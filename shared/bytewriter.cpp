#include "bytewriter.h"

#include <QDataStream>

#include <cstring>

namespace zeral::wire {

namespace {

constexpr quint32 NullLength = 0xffffffffu;

// Whether none of these eight bytes has its high bit set: plain ASCII.
bool ascii8(const uchar *bytes)
{
    quint64 word;
    std::memcpy(&word, bytes, sizeof word);
    return (word & 0x8080808080808080ull) == 0;
}

// Decodes well-formed UTF-8 into big-endian UTF-16 at `to`. Returns the end of what was
// written, or nullptr at anything that QString::fromUtf8 treats in a way of its own
// (malformed, overlong or cut sequences, encoded surrogates, code points past U+10FFFF,
// noncharacters, a byte-order mark), which is then left to it.
uchar *utf8ToUtf16BigEndian(const uchar *from, const uchar *end, uchar *to)
{
    while (from < end) {
        const uint lead = *from;
        if (lead < 0x80) {
            if (end - from >= 8 && ascii8(from)) {
                for (int i = 0; i < 8; ++i) {
                    to[2 * i] = 0;
                    to[2 * i + 1] = from[i];
                }
                from += 8;
                to += 16;
            } else {
                to[0] = 0;
                to[1] = uchar(lead);
                to += 2;
                ++from;
            }
            continue;
        }
        if (lead >= 0xc2 && lead <= 0xdf) { // two bytes (Cyrillic): never a special code point
            if (end - from < 2 || (from[1] & 0xc0) != 0x80)
                return nullptr;
            const uint code = ((lead & 0x1f) << 6) | (from[1] & 0x3f);
            to[0] = uchar(code >> 8);
            to[1] = uchar(code);
            to += 2;
            from += 2;
            continue;
        }
        int following = 0;
        uint code = 0;
        if (lead >= 0xe0 && lead <= 0xef) {
            following = 2;
            code = lead & 0x0f;
        } else if (lead >= 0xf0 && lead <= 0xf4) {
            following = 3;
            code = lead & 0x07;
        } else {
            return nullptr;
        }
        if (end - from <= following)
            return nullptr;
        for (int i = 1; i <= following; ++i) {
            const uint next = from[i];
            if ((next & 0xc0) != 0x80)
                return nullptr;
            code = (code << 6) | (next & 0x3f);
        }
        static constexpr uint Smallest[] = {0, 0, 0x800, 0x10000};
        if (code < Smallest[following] || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)
            || (code >= 0xfdd0 && code <= 0xfdef) || (code & 0xfffe) == 0xfffe || code == 0xfeff)
            return nullptr;
        from += following + 1;
        if (code < 0x10000) {
            qToBigEndian<quint16>(quint16(code), to);
            to += 2;
        } else {
            qToBigEndian<quint16>(quint16(0xd800 + ((code - 0x10000) >> 10)), to);
            qToBigEndian<quint16>(quint16(0xdc00 + (code & 0x3ff)), to + 2);
            to += 4;
        }
    }
    return to;
}

} // namespace

void ByteWriter::grow(int size)
{
    m_out->resize(qMax(m_at + size, 2 * m_out->size() + 64));
}

void ByteWriter::raw(const char *bytes, int size)
{
    std::memcpy(room(size), bytes, size_t(size));
    m_at += size;
}

void ByteWriter::text(const QString &text)
{
    if (text.isNull()) {
        put<quint32>(NullLength);
        return;
    }
    const int size = text.size() * 2;
    put<quint32>(quint32(size));
    qToBigEndian<ushort>(text.constData(), text.size(), room(size));
    m_at += size;
}

void ByteWriter::utf8(const char *utf8, int size)
{
    if (!utf8) {
        put<quint32>(NullLength);
        return;
    }
    // At most two bytes out for each byte in.
    auto *begin = reinterpret_cast<uchar *>(room(4 + 2 * size)) + 4;
    const auto *from = reinterpret_cast<const uchar *>(utf8);
    const uchar *end = utf8ToUtf16BigEndian(from, from + size, begin);
    if (!end) {
        text(QString::fromUtf8(utf8, size));
        return;
    }
    const auto written = int(end - begin);
    put<quint32>(quint32(written));
    m_at += written;
}

void ByteWriter::dateTime(const QDateTime &stamp)
{
    if (stamp.timeSpec() == Qt::TimeZone) {
        m_out->resize(m_at);
        QDataStream stream(m_out, QIODevice::WriteOnly | QIODevice::Append);
        stream.setVersion(QDataStream::Qt_5_15);
        stream << stamp;
        m_at = m_out->size();
        return;
    }
    const QDate date = stamp.date();
    const QTime time = stamp.time();
    put<qint64>(date.toJulianDay());
    put<quint32>(time.isNull() ? 0xffffffffu : quint32(time.msecsSinceStartOfDay()));
    put<qint8>(qint8(stamp.timeSpec()));
    if (stamp.timeSpec() == Qt::OffsetFromUTC)
        put<qint32>(stamp.offsetFromUtc());
}

} // namespace zeral::wire
