#include <host/core/maildeliverywatcher.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <tests/support/scriptedserver.h>

#include <QSignalSpy>
#include <QTest>

using zeral::MailDelivery;

namespace {

const char *const pushName = zeral::proto::command::MailDelivery;

zeral::MailDelivery delivery(qint64 id, const QString &recipient, const char *state,
                             const QString &error = {}, const QDateTime &next = {})
{
    zeral::MailDelivery result;
    result.id = id;
    result.recipient = recipient;
    result.state = QLatin1String(state);
    result.error = error;
    result.nextAttempt = next;
    return result;
}

const QString orlova = QStringLiteral("m.orlova@sevmeh.example");
const QString petrov = QStringLiteral("p.petrov@sevmeh.example");

} // namespace

class TestMailDeliveryWatcher : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheLastOutcome()
    {
        ScriptedServer server;
        MailDeliveryWatcher watcher(&server);
        QSignalSpy changed(&watcher, &MailDeliveryWatcher::deliveryChanged);
        const QDateTime retryAt = QDateTime(QDate(2026, 3, 1), QTime(10, 5), Qt::UTC);

        QVERIFY(
            watcher.noteQueued(orlova, ZRDataStream::pack(qint64(7), QStringLiteral("pending"))));
        const zeral::MailDelivery retry = delivery(7, orlova, MailDelivery::Pending,
                                                   QStringLiteral("Сервер недоступен"), retryAt);
        server.push(QLatin1String(pushName), ZRDataStream::pack(retry));
        server.push(QLatin1String(pushName),
                    ZRDataStream::pack(delivery(8, petrov, MailDelivery::Failed,
                                                QStringLiteral("Адрес отклонён"))));
        // The same outcome again changes nothing.
        server.push(QLatin1String(pushName), ZRDataStream::pack(retry));
        QCOMPARE(changed.count(), 3);
        QCOMPARE(watcher.outcome(7), retry);
        QCOMPARE(watcher.lastFor(QStringLiteral("M.Orlova@sevmeh.example")), retry);
        QCOMPARE(watcher.undelivered().size(), 2);

        // Delivered at last; a later mail to the same person is the one that counts.
        server.push(QLatin1String(pushName),
                    ZRDataStream::pack(delivery(7, orlova, MailDelivery::Sent)));
        QCOMPARE(watcher.outcome(7).state, QStringLiteral("sent"));
        QCOMPARE(watcher.undelivered(),
                 QList<zeral::MailDelivery>{
                     delivery(8, petrov, MailDelivery::Failed, QStringLiteral("Адрес отклонён"))});
        QVERIFY(watcher.noteQueued(orlova, ZRDataStream::pack(qint64(9), QStringLiteral("held"))));
        QCOMPARE(watcher.lastFor(orlova).id, qint64(9));
        QCOMPARE(changed.count(), 5);
        QCOMPARE(changed.last().first().value<zeral::MailDelivery>().state, QStringLiteral("held"));
    }

    void ignoresWhatDoesNotRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("data");
        QTest::addRow("empty") << QString::fromLatin1(pushName) << QByteArray();
        QTest::addRow("cut short")
            << QString::fromLatin1(pushName)
            << ZRDataStream::pack(delivery(3, orlova, MailDelivery::Sent)).left(12);
        QTest::addRow("bytes after it")
            << QString::fromLatin1(pushName)
            << ZRDataStream::pack(delivery(3, orlova, MailDelivery::Sent)) + QByteArray("x");
        QTest::addRow("unknown state")
            << QString::fromLatin1(pushName) << ZRDataStream::pack(delivery(3, orlova, "bounced"));
        QTest::addRow("no id") << QString::fromLatin1(pushName)
                               << ZRDataStream::pack(delivery(0, orlova, MailDelivery::Sent));
        QTest::addRow("no recipient") << QString::fromLatin1(pushName)
                                      << ZRDataStream::pack(delivery(3, {}, MailDelivery::Sent));
        QTest::addRow("another push")
            << QString::fromLatin1(zeral::proto::command::DataRemoved)
            << ZRDataStream::pack(delivery(3, orlova, MailDelivery::Sent));
    }
    void ignoresWhatDoesNotRead()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, data);
        ScriptedServer server;
        MailDeliveryWatcher watcher(&server);
        QSignalSpy changed(&watcher, &MailDeliveryWatcher::deliveryChanged);
        server.push(name, data);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(watcher.outcome(3).id, qint64(0));
        QVERIFY(watcher.undelivered().isEmpty());
        QVERIFY(!watcher.noteQueued(orlova, data));
        // A good push still reads afterwards.
        server.push(QLatin1String(pushName),
                    ZRDataStream::pack(delivery(4, orlova, MailDelivery::Failed)));
        QCOMPARE(changed.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestMailDeliveryWatcher)
#include "tst_maildeliverywatcher.moc"
