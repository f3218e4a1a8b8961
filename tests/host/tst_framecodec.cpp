#include <host/core/framecodec.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>

#include <QBuffer>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <memory>
#include <tuple>

using ReadResult = FrameCodec::ReadResult;
namespace {

Command sampleCommand(const QString &name)
{
    Command command;
    command.id = 0x0123456789abcdefULL;
    command.type = zeral::proto::NamedCommand;
    command.name = name;
    command.status = zeral::proto::StatusOk;
    command.sessionId = QByteArray("\x00\x01session\xff", 11);
    for (int i = 0; i < 256; ++i)
        command.data.append(char(i));
    return command;
}

// Every field, and whether the name is null, in one comparable value.
auto fields(const Command &c)
{
    return std::make_tuple(c.id, c.type, c.name, c.name.isNull(), c.status, c.sessionId, c.data);
}

} // namespace

class TestFrameCodec : public QObject
{
    Q_OBJECT
private slots:
    void frameInPieces_data();
    void frameInPieces();
    void badFrame_data();
    void badFrame();
};

void TestFrameCodec::frameInPieces_data()
{
    QTest::addColumn<Command>("command");
    QTest::addColumn<int>("count"); // frames in the stream, with ids counting up
    QTest::addColumn<bool>("tcp");
    QTest::addColumn<int>("pieceSize");
    const Command unicode = sampleCommand(QStringLiteral("данные.проверка — ключ ✓ 鍵 \U0001F511"));
    const int frameSize = FrameCodec::encode(unicode).size();
    const int whole = 1 << 30;
    QTest::addRow("non-Latin-1 name, binary data") << unicode << 1 << false << whole;
    QTest::addRow("empty fields, null name") << Command() << 1 << false << whole;
    QTest::addRow("byte by byte") << unicode << 2 << false << 1;
    QTest::addRow("tcp, 7-byte pieces") << unicode << 2 << true << 7;
    QTest::addRow("three frames and a half in one read")
        << unicode << 4 << false << frameSize * 7 / 2;
}

// Every whole frame that has arrived is read; a partial one waits and consumes nothing.
void TestFrameCodec::frameInPieces()
{
    QFETCH(Command, command);
    QFETCH(int, count);
    QFETCH(bool, tcp);
    QFETCH(int, pieceSize);
    const QByteArray frame = FrameCodec::encode(command);
    QCOMPARE(frame.left(4), ZRDataStream::pack(quint32(frame.size() - 4)));
    QCOMPARE(frame.mid(4), FrameCodec::encodePayload(command));
    const quint64 firstId = command.id;
    QByteArray stream;
    for (int i = 0; i < count; ++i) {
        command.id = firstId + quint64(i);
        stream += FrameCodec::encode(command);
    }

    QBuffer buffer;
    buffer.open(QIODevice::ReadOnly);
    QTcpServer server;
    QTcpSocket writer;
    std::unique_ptr<QTcpSocket> socket;
    if (tcp) {
        QVERIFY(server.listen(QHostAddress::LocalHost));
        writer.connectToHost(QHostAddress::LocalHost, server.serverPort());
        QVERIFY(writer.waitForConnected(5000));
        QVERIFY(server.waitForNewConnection(5000));
        socket.reset(server.nextPendingConnection());
        QVERIFY(socket);
    }
    QIODevice *reader = tcp ? static_cast<QIODevice *>(socket.get()) : &buffer;
    int read = 0;
    for (int fed = 0; fed < stream.size();) {
        const QByteArray piece = stream.mid(fed, pieceSize);
        fed += piece.size();
        if (tcp)
            writer.write(piece);
        else
            buffer.buffer().append(piece);
        QTRY_COMPARE_WITH_TIMEOUT(reader->bytesAvailable(), qint64(fed - read * frame.size()),
                                  5000);
        Command decoded;
        QString error;
        for (; read < fed / frame.size(); ++read) {
            QVERIFY(FrameCodec::read(reader, &decoded, &error) == ReadResult::Frame);
            command.id = firstId + quint64(read);
            QCOMPARE(fields(decoded), fields(command));
        }
        QVERIFY2(FrameCodec::read(reader, &decoded, &error) == ReadResult::Incomplete,
                 qPrintable(QString::number(fed)));
        QCOMPARE(reader->bytesAvailable(), qint64(fed - read * frame.size()));
    }
    QCOMPARE(read, count);
}

void TestFrameCodec::badFrame_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("waits"); // Incomplete rather than Error
    const QByteArray payload = FrameCodec::encodePayload(sampleCommand(QStringLiteral("x")));
    const QByteArray truncated = payload.left(payload.size() - 3);
    const QByteArray trailing = payload + QByteArray(1, '\0');
    // Only the length is there: an oversized one is refused before its bytes come.
    QTest::addRow("length over the limit")
        << ZRDataStream::pack(quint32(zeral::proto::MaxFrameSize + 1)) << false;
    QTest::addRow("length 0xffffffff") << ZRDataStream::pack(quint32(0xffffffffu)) << false;
    QTest::addRow("length at the limit waits")
        << ZRDataStream::pack(quint32(zeral::proto::MaxFrameSize)) << true;
    QTest::addRow("empty payload") << ZRDataStream::pack(quint32(0)) << false;
    QTest::addRow("payload cut inside a field")
        << ZRDataStream::pack(quint32(truncated.size())) + truncated << false;
    QTest::addRow("trailing bytes after the command")
        << ZRDataStream::pack(quint32(trailing.size())) + trailing << false;
}

void TestFrameCodec::badFrame()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, waits);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    Command decoded;
    decoded.name = QStringLiteral("untouched");
    QString error;
    const ReadResult result = FrameCodec::read(&buffer, &decoded, &error);
    QVERIFY(result == (waits ? ReadResult::Incomplete : ReadResult::Error));
    QCOMPARE(decoded.name, QStringLiteral("untouched"));
    QCOMPARE(error.isEmpty(), waits);
    if (waits)
        QCOMPARE(buffer.bytesAvailable(), qint64(bytes.size()));
}

QTEST_GUILESS_MAIN(TestFrameCodec)
#include "tst_framecodec.moc"
