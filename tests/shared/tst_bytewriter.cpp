#include <shared/bytewriter.h>

#include <QDataStream>
#include <QRandomGenerator>
#include <QTest>
#include <QTimeZone>

using namespace zeral;

namespace {

// What QDataStream writes for these values, in the system's settings.
template<class T>
QByteArray streamed(const T &value)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_15);
    out << value;
    return bytes;
}

QByteArray writtenUtf8(const char *utf8, int size)
{
    QByteArray bytes = QByteArrayLiteral("head");
    {
        wire::ByteWriter out(&bytes);
        out.utf8(utf8, size);
    }
    return bytes.mid(4);
}

// Qt's own decoding of all the bytes, zero bytes included. GCC warns of the strlen() that
// a negative size would take, on the empty array's shared storage; the size is never negative.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wstringop-overread"
#endif
QString qtDecoded(const QByteArray &bytes)
{
    return QString::fromUtf8(bytes.constData(), bytes.size());
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

} // namespace

class TestByteWriter : public QObject
{
    Q_OBJECT

private slots:
    void utf8AsQtDecodesIt_data();
    void utf8AsQtDecodesIt();
    void utf8OfRandomBytes();
    void nullText();
    void valuesAsQtWritesThem();
};

void TestByteWriter::utf8AsQtDecodesIt_data()
{
    QTest::addColumn<QByteArray>("utf8");
    const auto row = [](const char *name, const QByteArray &bytes) {
        QTest::newRow(name) << bytes;
    };
    row("empty", QByteArray(""));
    row("ascii, shorter than a word", "login");
    row("ascii, several words and a tail", "a.nesterova@td-volga.example");
    row("cyrillic", QStringLiteral("Константиновна").toUtf8());
    row("mixed", QStringLiteral("Юлия Smirnova, 12 лет").toUtf8());
    row("three bytes", QStringLiteral("№ 5 — €").toUtf8());
    row("four bytes: a surrogate pair", QStringLiteral("Zoë 𝄞 😀").toUtf8());
    row("a byte-order mark first", QByteArray("\xef\xbb\xbf" "abc"));
    row("a byte-order mark inside", QByteArray("ab\xef\xbb\xbf" "c"));
    row("a lone continuation byte", QByteArray("ab\x80" "cd"));
    row("a cut two-byte sequence", QByteArray("ab\xd0"));
    row("a cut four-byte sequence", QByteArray("\xf0\x9d\x84"));
    row("a two-byte sequence without its continuation", QByteArray("\xd0" "abcdefgh"));
    row("overlong ascii", QByteArray("\xc1\x81"));
    row("overlong three bytes", QByteArray("\xe0\x80\xaf"));
    row("an encoded surrogate", QByteArray("\xed\xa0\x80"));
    row("past U+10FFFF", QByteArray("\xf4\x90\x80\x80"));
    row("a noncharacter U+FFFE", QByteArray("\xef\xbf\xbe"));
    row("a noncharacter U+FDD0", QByteArray("\xef\xb7\x90"));
    row("a byte that is never UTF-8", QByteArray("a\xff" "b"));
    row("a zero byte", QByteArray("a\0b", 3));
}

void TestByteWriter::utf8AsQtDecodesIt()
{
    QFETCH(QByteArray, utf8);
    QCOMPARE(writtenUtf8(utf8.constData(), utf8.size()).toHex(),
             streamed(qtDecoded(utf8)).toHex());
}

void TestByteWriter::utf8OfRandomBytes()
{
    // Mostly well-formed text with bytes changed here and there, so that every branch of the
    // decoder meets both its good and its bad cases.
    QRandomGenerator random(20261124);
    const QByteArray alphabet = QStringLiteral("aZ09 .ЖжЁё№—€𝄞").toUtf8();
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes;
        const int length = int(random.bounded(40));
        for (int i = 0; i < length; ++i)
            bytes.append(alphabet.at(int(random.bounded(alphabet.size()))));
        if (!bytes.isEmpty() && random.bounded(2) == 0)
            bytes[int(random.bounded(bytes.size()))] = char(random.bounded(256));
        const QByteArray expected = streamed(qtDecoded(bytes));
        const QByteArray written = writtenUtf8(bytes.constData(), bytes.size());
        if (written != expected)
            QFAIL(qPrintable(QStringLiteral("%1: %2 instead of %3")
                                 .arg(QString::fromLatin1(bytes.toHex()),
                                      QString::fromLatin1(written.toHex()),
                                      QString::fromLatin1(expected.toHex()))));
    }
}

void TestByteWriter::nullText()
{
    // An SQL NULL is a null QString on the wire; an empty text is not.
    QCOMPARE(writtenUtf8(nullptr, 0).toHex(), streamed(QString()).toHex());
    QCOMPARE(writtenUtf8("", 0).toHex(), streamed(QString(QLatin1String(""))).toHex());
    QVERIFY(streamed(QString()) != streamed(QString(QLatin1String(""))));
}

void TestByteWriter::valuesAsQtWritesThem()
{
    const QList<QDateTime> stamps{
        QDateTime(),
        QDateTime(QDate(2026, 11, 24), QTime(18, 30, 1, 250), Qt::UTC),
        QDateTime(QDate(2025, 3, 30), QTime(2, 30), Qt::LocalTime),
        QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59), Qt::OffsetFromUTC, -5 * 3600),
        QDateTime(QDate(2026, 1, 1), QTime(9, 0), QTimeZone(QByteArrayLiteral("Europe/Moscow"))),
    };
    QByteArray expected;
    {
        QDataStream out(&expected, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_5_15);
        out << quint32(7) << qint8(-2) << QStringLiteral("Ёж") << QString();
        for (const QDateTime &stamp : stamps)
            out << stamp << quint32(0xdeadbeef);
    }
    QByteArray written;
    {
        wire::ByteWriter out(&written);
        out.put<quint32>(0);
        out.put<qint8>(-2);
        out.text(QStringLiteral("Ёж"));
        out.text(QString());
        for (const QDateTime &stamp : stamps) {
            out.dateTime(stamp);
            out.put<quint32>(0xdeadbeef);
        }
        out.putAt<quint32>(0, 7);
        QCOMPARE(out.size(), expected.size());
    }
    QCOMPARE(written.toHex(), expected.toHex());
}

QTEST_GUILESS_MAIN(TestByteWriter)
#include "tst_bytewriter.moc"
