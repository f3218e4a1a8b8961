// The studio's list of locked logins: its model, the dialog against a scripted server (what it
// sends, what it shows on a refusal) and against the real engine, and the menu entry that
// only an operator who may change users gets.

#include <app/window/loginlocksdialog.h>
#include <app/window/loginlocksmodel.h>
#include <app/window/mainwindow.h>
#include <host/core/authdata.h>
#include <host/core/loginclient.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <shared/loginlockinfo.h>
#include <shared/rolenames.h>
#include <tests/server/serverharness.h>
#include <tests/support/scriptedserver.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

namespace proto = zeral::proto;
using zeral::LoginLockInfo;
using Locks = QList<LoginLockInfo>;

namespace {

const QString listLocks = QLatin1String(proto::command::LoginLocks);
const QString unlockLogin = QLatin1String(proto::command::UnlockLogin);
const QDateTime until(QDate(2024, 3, 1), QTime(10, 5), Qt::UTC);

Locks threeLocks()
{
    return {{QStringLiteral("Root"), QStringLiteral("10.0.0.1"), 5, until},
            {QStringLiteral("root"), QStringLiteral("10.0.0.2"), 7, until.addSecs(60)},
            {QStringLiteral("alice"), QStringLiteral("10.0.0.1"), 5, until.addSecs(120)}};
}

QStringList rowsOf(const LoginLocksModel &model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row) {
        rows.append(model.index(row, LoginLocksModel::LoginColumn).data().toString() + '@'
                    + model.index(row, LoginLocksModel::AddressColumn).data().toString());
    }
    return rows;
}

void logIn(const QStringList &roles)
{
    AuthData::set({QStringLiteral("operator"), 2, "session-7", QString(), roles, QString()});
}

template<class Widget>
Widget *child(QWidget &parent, const char *name)
{
    return parent.findChild<Widget *>(QLatin1String(name));
}

void selectRow(LoginLocksDialog &dialog, int row)
{
    auto *view = child<QTableView>(dialog, "locksView");
    view->selectionModel()->select(dialog.model()->index(row, 0),
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

} // namespace

class TestLoginLocksDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QVERIFY(m_settings.isValid());
        Settings::useFile(m_settings.filePath(QStringLiteral("studio.ini")));
    }
    void init()
    {
        m_server = new ScriptedServer(this);
        m_server->script(listLocks, [](const Command &request) {
            return Command::answer(request, proto::StatusOk,
                                   ZRDataStream::pack(threeLocks(), until.addSecs(-300)));
        });
        logIn({zeral::role::USER_SHOW, zeral::role::USER_UPDATE});
    }
    void cleanup()
    {
        delete m_server;
        AuthData::clear();
    }

    void modelTakesOutWhatTheServerLifted_data()
    {
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QStringList>("left");
        QTest::addRow("one address")
            << "root"
            << "10.0.0.1" << QStringList{"root@10.0.0.2", "alice@10.0.0.1"};
        QTest::addRow("every address, any case")
            << "ROOT" << QString() << QStringList{"alice@10.0.0.1"};
        QTest::addRow("the last row")
            << "alice"
            << "10.0.0.1" << QStringList{"Root@10.0.0.1", "root@10.0.0.2"};
        QTest::addRow("nothing matches")
            << "bob" << QString()
            << QStringList{"Root@10.0.0.1", "root@10.0.0.2", "alice@10.0.0.1"};
    }
    void modelTakesOutWhatTheServerLifted()
    {
        QFETCH(QString, login);
        QFETCH(QString, address);
        QFETCH(QStringList, left);
        LoginLocksModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setLocks(threeLocks());
        QCOMPARE(model.columnCount(), int(LoginLocksModel::ColumnCount));
        model.removeLocks(login, address);
        QCOMPARE(rowsOf(model), left);
    }

    void tableFillsAndUnlockSendsTheChosenRow()
    {
        m_server->script(unlockLogin, [](const Command &request) {
            return Command::answer(request, proto::StatusOk, ZRDataStream::pack(qint32(1)));
        });
        LoginLocksDialog dialog(m_server);
        dialog.show();
        QTRY_COMPARE(dialog.model()->rowCount(), 3);
        auto *unlock = child<QPushButton>(dialog, "unlockButton");
        QVERIFY(!unlock->isEnabled()); // nothing chosen yet
        selectRow(dialog, 1);
        QVERIFY(unlock->isEnabled());
        QSignalSpy finished(&dialog, &LoginLocksDialog::unlockFinished);
        QTest::mouseClick(unlock, Qt::LeftButton);
        QVERIFY(finished.wait(5000));

        const Command sent = m_server->lastSent(unlockLogin);
        QCOMPARE(sent.sessionId, QByteArray("session-7"));
        QString login, address;
        ZRDataStream in(sent.data);
        in >> login >> address;
        QVERIFY(in.atEnd());
        QCOMPARE(login, QStringLiteral("root"));
        QCOMPARE(address, QStringLiteral("10.0.0.2"));
        QCOMPARE(rowsOf(*dialog.model()), (QStringList{"Root@10.0.0.1", "alice@10.0.0.1"}));
        QCOMPARE(child<MessageWidget>(dialog, "messageLine")->messageIcon(),
                 MessageWidget::Positive);
    }

    void refusalIsShown_data()
    {
        QTest::addColumn<QString>("refused");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("rowsAfter");
        QTest::addRow("list, no right") << listLocks << int(proto::StatusForbidden) << 0;
        QTest::addRow("list, connection lost")
            << listLocks << int(proto::StatusConnectionLost) << 0;
        QTest::addRow("unlock, no right") << unlockLogin << int(proto::StatusForbidden) << 3;
        // Lifted by somebody else or run out meanwhile: the row goes, and the operator is told.
        QTest::addRow("unlock, no longer locked") << unlockLogin << int(proto::StatusNotFound) << 2;
    }
    void refusalIsShown()
    {
        QFETCH(QString, refused);
        QFETCH(int, status);
        QFETCH(int, rowsAfter);
        const QString text = QStringLiteral("Причина отказа.");
        m_server->script(refused, [status, text](const Command &request) {
            return Command::failure(request, status, text);
        });
        LoginLocksDialog dialog(m_server);
        dialog.show();
        QSignalSpy finished(&dialog, refused == listLocks ? &LoginLocksDialog::refreshed
                                                          : &LoginLocksDialog::unlockFinished);
        if (refused == unlockLogin) {
            QTRY_COMPARE(dialog.model()->rowCount(), 3);
            selectRow(dialog, 0);
            QTest::mouseClick(child<QPushButton>(dialog, "unlockButton"), Qt::LeftButton);
        }
        QVERIFY(finished.wait(5000));
        auto *message = child<MessageWidget>(dialog, "messageLine");
        QVERIFY(message->isVisible());
        QCOMPARE(message->messageIcon(), MessageWidget::Critical);
        QVERIFY2(message->text().contains(text), qPrintable(message->text()));
        QCOMPARE(dialog.model()->rowCount(), rowsAfter);
    }

    void unlocksAtTheRealServer()
    {
        harness::Server server;
        QCOMPARE(server.start(), QString());
        {
            const auto root = server.rootClient();
            QVERIFY(harness::addUser(*root, QStringLiteral("operator1"),
                                     QStringLiteral("RT_OPERATOR")));
        }
        auto attacker = server.client(QHostAddress(QStringLiteral("127.0.0.2")));
        for (int i = 0; i < 5; ++i)
            attacker->login(QStringLiteral("operator1"), QStringLiteral("wrong"));
        QCOMPARE(attacker->login(QStringLiteral("operator1"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusLoginLocked));

        AuthData::clear();
        ZRServerInterface router;
        LoginClient login(&router);
        QSignalSpy loggedIn(&login, &LoginClient::loggedIn);
        router.connectToServer(QStringLiteral("127.0.0.1"), server.engine->port());
        QTRY_COMPARE(router.state(), ZRServerInterface::State::Connected);
        login.login(QStringLiteral("root"), QStringLiteral("RootPass1"), QStringLiteral("test"));
        QVERIFY(loggedIn.wait(5000));

        LoginLocksDialog dialog(&router);
        dialog.show();
        QTRY_COMPARE(dialog.model()->rowCount(), 1);
        const LoginLockInfo lock = dialog.model()->lock(0);
        QCOMPARE(lock.login, QStringLiteral("operator1"));
        QCOMPARE(lock.address, QStringLiteral("127.0.0.2"));
        QCOMPARE(lock.failures, 5);
        QCOMPARE(lock.lockedUntil, server.now.addSecs(300).toUTC());
        selectRow(dialog, 0);
        QSignalSpy finished(&dialog, &LoginLocksDialog::unlockFinished);
        QTest::mouseClick(child<QPushButton>(dialog, "unlockButton"), Qt::LeftButton);
        QVERIFY(finished.wait(5000));
        QCOMPARE(dialog.model()->rowCount(), 0);
        QCOMPARE(attacker->login(QStringLiteral("operator1"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
    }

    void menuEntryOnlyWithTheRight_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<bool>("offered");
        QTest::addRow("may change users") << QStringList{zeral::role::USER_UPDATE} << true;
        QTest::addRow("may only see users") << QStringList{zeral::role::USER_SHOW} << false;
    }
    void menuEntryOnlyWithTheRight()
    {
        QFETCH(QStringList, roles);
        QFETCH(bool, offered);
        logIn(roles);
        MainWindow window(m_server);
        auto *action = window.findChild<QAction *>(QStringLiteral("actionLoginLocks"));
        QCOMPARE(action != nullptr, offered);
        if (!action)
            return;
        m_server->clearSent();
        action->trigger();
        auto *dialog = window.findChild<LoginLocksDialog *>();
        QVERIFY(dialog && dialog->isVisible());
        QTRY_COMPARE(dialog->model()->rowCount(), 3);
        QCOMPARE(m_server->sent().size(), 1);
        QCOMPARE(m_server->sent().first().name, listLocks);
    }

private:
    QTemporaryDir m_settings;
    ScriptedServer *m_server = nullptr;
};

QTEST_MAIN(TestLoginLocksDialog)
#include "tst_loginlocksdialog.moc"
