// The main window's notice about the operator's mails that did not go out, driven by
// "mail.delivery" pushes of a scripted server; and the studio's --smtp option.

#include <app/startup/studiooptions.h>
#include <app/window/mainwindow.h>
#include <host/core/maildeliverywatcher.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <shared/maildelivery.h>
#include <tests/support/scriptedserver.h>

#include <QTemporaryDir>
#include <QtTest>

using zeral::MailDelivery;

class TestMailNotice : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_settings.isValid());
        Settings::useFile(m_settings.filePath(QStringLiteral("studio.ini")));
    }

    void noticeFollowsTheOutcome_data()
    {
        // Pushes in order, "id:state"; what the notice line says afterwards ("" = hidden).
        QTest::addColumn<QStringList>("pushes");
        QTest::addColumn<QString>("notice");
        QTest::addColumn<int>("icon");
        QTest::addRow("waits for a retry")
            << QStringList{"1:pending"} << "Сервер повторит отправку в"
            << int(MessageWidget::Warning);
        QTest::addRow("given up") << QStringList{"1:failed"} << "больше не будет его отправлять"
                                  << int(MessageWidget::Critical);
        QTest::addRow("delivered at once") << QStringList{"1:sent"} << "" << 0;
        QTest::addRow("delivered on retry") << QStringList{"1:pending", "1:sent"} << "" << 0;
        QTest::addRow("another mail delivered")
            << QStringList{"1:pending", "2:sent"} << "Сервер повторит отправку в"
            << int(MessageWidget::Warning);
        QTest::addRow("retry, then given up") << QStringList{"1:pending", "1:failed"}
                                              << "больше не будет" << int(MessageWidget::Critical);
    }
    void noticeFollowsTheOutcome()
    {
        QFETCH(QStringList, pushes);
        QFETCH(QString, notice);
        QFETCH(int, icon);
        ScriptedServer server;
        MainWindow window(&server);
        for (const QString &push : pushes) {
            MailDelivery delivery;
            delivery.id = push.section(QLatin1Char(':'), 0, 0).toLongLong();
            delivery.state = push.section(QLatin1Char(':'), 1);
            delivery.recipient = QStringLiteral("m%1@sevmeh.example").arg(delivery.id);
            if (delivery.state != QLatin1String(MailDelivery::Sent))
                delivery.error = QStringLiteral("Почтовый сервер 127.0.0.1:25 недоступен");
            if (delivery.state == QLatin1String(MailDelivery::Pending))
                delivery.nextAttempt = QDateTime(QDate(2026, 3, 1), QTime(9, 30), Qt::UTC);
            server.push(QLatin1String(zeral::proto::command::MailDelivery),
                        ZRDataStream::pack(delivery));
        }
        QCOMPARE(window.notice()->isVisibleTo(&window), !notice.isEmpty());
        if (notice.isEmpty())
            return;
        const QString text = window.notice()->text();
        QVERIFY2(text.contains(notice), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("m1@sevmeh.example")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("127.0.0.1:25 недоступен")), qPrintable(text));
        QCOMPARE(int(window.notice()->messageIcon()), icon);
        QCOMPARE(window.mailDeliveries()->outcome(1).recipient,
                 QStringLiteral("m1@sevmeh.example"));
    }

    void smtpOption_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("smtpUrl");
        QTest::addRow("none") << QStringList{} << true << QString();
        QTest::addRow("relay") << QStringList{"--demo", "--smtp", "smtp://127.0.0.1:8025"} << true
                               << "smtp://127.0.0.1:8025";
        QTest::addRow("tls relay") << QStringList{"--smtp", "smtps://mail.example:465"} << true
                                   << "smtps://mail.example:465";
        QTest::addRow("not a relay URL")
            << QStringList{"--smtp", "127.0.0.1:8025"} << false << QString();
        QTest::addRow("with a remote server")
            << QStringList{"--server", "10.0.0.5:7700", "--smtp", "smtp://127.0.0.1:8025"} << false
            << QString();
    }
    void smtpOption()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, accepted);
        QFETCH(QString, smtpUrl);
        StudioOptions options;
        QString error;
        QCOMPARE(StudioOptions::parse(QStringList{"zr-studio"} + arguments, &options, &error),
                 accepted);
        if (accepted)
            QCOMPARE(options.smtpUrl, smtpUrl);
        else
            QVERIFY(error.contains(QStringLiteral("--smtp"))
                    || error.contains(QStringLiteral("smtp://")));
    }

private:
    QTemporaryDir m_settings;
};

QTEST_MAIN(TestMailNotice)
#include "tst_mailnotice.moc"
