#include <host/core/framecodec.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>

#include <QBuffer>
#include <QHostAddress>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <memory>

using ReadResult = FrameCodec::ReadResult;
Q_DECLARE_METATYPE(FrameCodec::ReadResult)

// Found by QCOMPARE through argument lookup, for readable failures.
static char *toString(ReadResult result)
{
    switch (result) {
    case ReadResult::Frame:
        return qstrdup("Frame");
    case ReadResult::Incomplete:
        return qstrdup("Incomplete");
    case ReadResult::Error:
        return qstrdup("Error");
    }
    return qstrdup("?");
}

namespace {

// Bytes written on one side and read by FrameCodec on the other: a QBuffer, or a real TCP
// connection on the loopback.
class Channel
{
public:
    virtual ~Channel() = default;
    virtual QIODevice *reader() = 0;
    // Makes `bytes` readable after what is there already; false if they never arrive.
    virtual bool feed(const QByteArray &bytes) = 0;
};

class BufferChannel : public Channel
{
public:
    BufferChannel() { m_buffer.open(QIODevice::ReadOnly); }
    QIODevice *reader() override { return &m_buffer; }
    bool feed(const QByteArray &bytes) override
    {
        m_buffer.buffer().append(bytes);
        return true;
    }

private:
    QBuffer m_buffer;
};

class TcpChannel : public Channel
{
public:
    bool open()
    {
        if (!m_server.listen(QHostAddress::LocalHost))
            return false;
        QSignalSpy accepted(&m_server, &QTcpServer::newConnection);
        QSignalSpy connected(&m_writer, &QTcpSocket::connected);
        m_writer.connectToHost(QHostAddress::LocalHost, m_server.serverPort());
        if (!waitFor(connected) || !waitFor(accepted))
            return false;
        m_reader.reset(m_server.nextPendingConnection());
        return m_reader != nullptr;
    }
    QIODevice *reader() override { return m_reader.get(); }
    bool feed(const QByteArray &bytes) override
    {
        const qint64 expected = m_reader->bytesAvailable() + bytes.size();
        QSignalSpy arrived(m_reader.get(), &QIODevice::readyRead);
        m_writer.write(bytes);
        while (m_reader->bytesAvailable() < expected) {
            if (!arrived.wait(5000))
                return false;
        }
        return true;
    }

private:
    static bool waitFor(QSignalSpy &spy) { return !spy.isEmpty() || spy.wait(5000); }

    QTcpServer m_server;
    QTcpSocket m_writer;
    std::unique_ptr<QTcpSocket> m_reader;
};

std::unique_ptr<Channel> makeChannel(const QString &transport)
{
    if (transport == QLatin1String("buffer"))
        return std::make_unique<BufferChannel>();
    auto tcp = std::make_unique<TcpChannel>();
    if (!tcp->open())
        return nullptr;
    return tcp;
}

QByteArray lengthPrefix(quint32 length)
{
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    out << length;
    return bytes;
}

QByteArray allByteValues()
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(char(i));
    return bytes;
}

Command sampleCommand(quint64 id, const QString &name)
{
    Command command;
    command.id = id;
    command.type = zeral::proto::NamedCommand;
    command.name = name;
    command.status = zeral::proto::StatusOk;
    command.sessionId = QByteArray("\x00\x01session\xff", 11);
    command.data = allByteValues();
    return command;
}

void compareCommands(const Command &actual, const Command &expected)
{
    QCOMPARE(actual.id, expected.id);
    QCOMPARE(actual.type, expected.type);
    QCOMPARE(actual.name, expected.name);
    QCOMPARE(actual.name.isNull(), expected.name.isNull());
    QCOMPARE(actual.status, expected.status);
    QCOMPARE(actual.sessionId, expected.sessionId);
    QCOMPARE(actual.data, expected.data);
}

const char *const transports[] = {"buffer", "tcp"};

} // namespace

class TestFrameCodec : public QObject
{
    Q_OBJECT
private slots:
    void roundTrip_data();
    void roundTrip();
    void frameInPieces_data();
    void frameInPieces();
    void severalFramesInOneRead_data();
    void severalFramesInOneRead();
    void badFrame_data();
    void badFrame();
};

void TestFrameCodec::roundTrip_data()
{
    QTest::addColumn<QString>("transport");
    QTest::addColumn<Command>("command");
    const Command unicode = sampleCommand(0x0123456789abcdefULL,
                                          QStringLiteral("данные.проверка — ключ ✓ 鍵 \U0001F511"));
    Command empty; // null name, empty payload
    for (const char *transport : transports) {
        QTest::addRow("%s: non-Latin-1 name, binary data", transport) << transport << unicode;
        QTest::addRow("%s: empty fields", transport) << transport << empty;
    }
}

void TestFrameCodec::roundTrip()
{
    QFETCH(QString, transport);
    QFETCH(Command, command);
    const QByteArray frame = FrameCodec::encode(command);
    QCOMPARE(frame.mid(0, 4), lengthPrefix(quint32(frame.size() - 4)));
    QCOMPARE(frame.mid(4), FrameCodec::encodePayload(command));

    const auto channel = makeChannel(transport);
    QVERIFY(channel);
    QVERIFY(channel->feed(frame));
    Command decoded;
    QString error;
    QCOMPARE(FrameCodec::read(channel->reader(), &decoded, &error), ReadResult::Frame);
    compareCommands(decoded, command);
    QCOMPARE(channel->reader()->bytesAvailable(), 0);
}

void TestFrameCodec::frameInPieces_data()
{
    QTest::addColumn<QString>("transport");
    QTest::addColumn<int>("pieceSize");
    for (const char *transport : transports) {
        QTest::addRow("%s: byte by byte", transport) << transport << 1;
        QTest::addRow("%s: 7-byte pieces", transport) << transport << 7;
    }
}

void TestFrameCodec::frameInPieces()
{
    QFETCH(QString, transport);
    QFETCH(int, pieceSize);
    const Command command = sampleCommand(42, QStringLiteral("журнал.событие"));
    const QByteArray frame = FrameCodec::encode(command);
    const auto channel = makeChannel(transport);
    QVERIFY(channel);
    QIODevice *reader = channel->reader();

    for (int fed = 0; fed < frame.size();) {
        const QByteArray piece = frame.mid(fed, pieceSize);
        QVERIFY(channel->feed(piece));
        fed += piece.size();
        Command decoded;
        QString error;
        const ReadResult result = FrameCodec::read(reader, &decoded, &error);
        if (fed < frame.size()) {
            QVERIFY2(result == ReadResult::Incomplete, qPrintable(QString::number(fed)));
            QCOMPARE(reader->bytesAvailable(), qint64(fed)); // nothing consumed
        } else {
            QCOMPARE(result, ReadResult::Frame);
            compareCommands(decoded, command);
            QCOMPARE(reader->bytesAvailable(), 0);
        }
    }
}

void TestFrameCodec::severalFramesInOneRead_data()
{
    QTest::addColumn<QString>("transport");
    for (const char *transport : transports)
        QTest::addRow("%s", transport) << transport;
}

void TestFrameCodec::severalFramesInOneRead()
{
    QFETCH(QString, transport);
    QList<Command> commands;
    QByteArray bytes;
    for (int i = 1; i <= 4; ++i) {
        commands.append(sampleCommand(quint64(i), QStringLiteral("команда.%1").arg(i)));
        commands.last().data = QByteArray(i * 100, char('a' + i));
        bytes += FrameCodec::encode(commands.last());
    }
    // The last frame is cut short: the first three come out, then the reader waits.
    const int cut = bytes.size() - 10;
    const auto channel = makeChannel(transport);
    QVERIFY(channel);
    QVERIFY(channel->feed(bytes.left(cut)));

    Command decoded;
    QString error;
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(FrameCodec::read(channel->reader(), &decoded, &error), ReadResult::Frame);
        compareCommands(decoded, commands.at(i));
    }
    const qint64 rest = channel->reader()->bytesAvailable();
    QCOMPARE(FrameCodec::read(channel->reader(), &decoded, &error), ReadResult::Incomplete);
    QCOMPARE(channel->reader()->bytesAvailable(), rest);
    QVERIFY(channel->feed(bytes.mid(cut)));
    QCOMPARE(FrameCodec::read(channel->reader(), &decoded, &error), ReadResult::Frame);
    compareCommands(decoded, commands.at(3));
}

void TestFrameCodec::badFrame_data()
{
    QTest::addColumn<QString>("transport");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<ReadResult>("expected");

    const QByteArray payload = FrameCodec::encodePayload(sampleCommand(7, QStringLiteral("x")));
    const QByteArray truncated = payload.left(payload.size() - 3);
    const QByteArray trailing = payload + QByteArray(1, '\0');
    // A name whose length claims more bytes than the frame holds.
    QByteArray lying;
    {
        ZRDataStream out(&lying, QIODevice::WriteOnly);
        out << quint64(7) << qint32(8) << quint32(1000) << quint32(0);
    }
    for (const char *transport : transports) {
        // Only the length is sent: an oversized one is refused before its bytes come.
        QTest::addRow("%s: length over the limit", transport)
            << transport << lengthPrefix(zeral::proto::MaxFrameSize + 1) << ReadResult::Error;
        QTest::addRow("%s: length 0xffffffff", transport)
            << transport << lengthPrefix(0xffffffffu) << ReadResult::Error;
        QTest::addRow("%s: length at the limit waits", transport)
            << transport << lengthPrefix(zeral::proto::MaxFrameSize) << ReadResult::Incomplete;
        QTest::addRow("%s: empty payload", transport)
            << transport << lengthPrefix(0) << ReadResult::Error;
        QTest::addRow("%s: payload too short for a command", transport)
            << transport << lengthPrefix(5) + QByteArray(5, '\xff') << ReadResult::Error;
        QTest::addRow("%s: payload cut inside a field", transport)
            << transport << lengthPrefix(quint32(truncated.size())) + truncated
            << ReadResult::Error;
        QTest::addRow("%s: string longer than the payload", transport)
            << transport << lengthPrefix(quint32(lying.size())) + lying << ReadResult::Error;
        QTest::addRow("%s: trailing bytes after the command", transport)
            << transport << lengthPrefix(quint32(trailing.size())) + trailing << ReadResult::Error;
    }
}

void TestFrameCodec::badFrame()
{
    QFETCH(QString, transport);
    QFETCH(QByteArray, bytes);
    QFETCH(ReadResult, expected);
    const auto channel = makeChannel(transport);
    QVERIFY(channel);
    QVERIFY(channel->feed(bytes));

    Command decoded;
    decoded.name = QStringLiteral("untouched");
    QString error;
    QCOMPARE(FrameCodec::read(channel->reader(), &decoded, &error), expected);
    QCOMPARE(decoded.name, QStringLiteral("untouched"));
    if (expected == ReadResult::Error)
        QVERIFY(!error.isEmpty());
    else
        QCOMPARE(channel->reader()->bytesAvailable(), qint64(bytes.size()));
}

QTEST_GUILESS_MAIN(TestFrameCodec)
#include "tst_framecodec.moc"
