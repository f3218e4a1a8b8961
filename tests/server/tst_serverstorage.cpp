// The server's database under it: a schema of a newer server is refused, and on PostgreSQL a
// database that goes away under a running server fails the requests meanwhile, changes
// nothing half-way, and is used again once it is back.

#include "serverharness.h"

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace harness;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

class TestServerStorage : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { ZR_SKIP_WITHOUT_TEST_DATABASE(); }

    void newerSchemaIsRefused()
    {
        Server server;
        QCOMPARE(server.start(), QString());
        server.engine.reset();
        {
            QSqlDatabase db = sideDatabase(server.databasePath, QStringLiteral("newer"));
            QVERIFY(db.open());
            QSqlQuery query(db);
            QVERIFY(query.exec(onPostgres()
                                   ? QStringLiteral("UPDATE schema_version SET version = 99")
                                   : QStringLiteral("PRAGMA user_version = 99")));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("newer"));
        const QString error = server.start();
        // One sentence that names the versions; the engine doesn't listen.
        QVERIFY2(error.contains(QStringLiteral("newer server (schema 99, this server knows 2)")),
                 qPrintable(error));
        QCOMPARE(error.count(QLatin1Char('\n')), 0);
        QVERIFY(!server.engine->isListening());
    }

    void databaseGoesAwayAndComesBack()
    {
        if (!onPostgres())
            QSKIP("an SQLite file does not go away under the server");
        Server server;
        QCOMPARE(server.start(), QString());
        auto root = server.rootClient();
        QVERIFY(!root->session.isEmpty());
        const TYPE_ID alice
            = addUser(*root, QStringLiteral("alice"), QStringLiteral("RT_OPERATOR"));
        QVERIFY(alice);
        QCOMPARE(select(*root, QStringLiteral("SELECT count(*) FROM userid")).rowCount, 1);

        QVERIFY(testCluster().stop(true));
        // Every kind of request is answered, with the reason, while the database is away: a
        // change, a new object, a client statement, a login.
        const Command changed
            = updateUser(*root, alice, {{QStringLiteral("PT_SURNAME"), QStringLiteral("Ушла")}});
        QCOMPARE(changed.status, qint32(proto::StatusInternal));
        QVERIFY2(errorText(changed).contains(QStringLiteral("недоступна")),
                 qPrintable(errorText(changed)));
        qint32 addStatus = 0;
        QCOMPARE(addUser(*root, QStringLiteral("bob"), QStringLiteral("RT_OPERATOR"),
                         QStringLiteral("Passw0rd"), &addStatus),
                 TYPE_ID(0));
        QCOMPARE(addStatus, qint32(proto::StatusInternal));
        DbQuery query;
        query.statements = QStringList(QStringLiteral("SELECT 1"));
        QCOMPARE(root->request(cmd::ExecSql, ZRDataStream::pack(query)).status,
                 qint32(proto::StatusInternal));
        auto other = server.client();
        QCOMPARE(other->login(QStringLiteral("alice"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusInternal));

        QString why;
        QVERIFY2(testCluster().start(&why), qPrintable(why));
        // Back: the same session goes on (the outage ended nobody's session), on a new
        // connection of the server, and nothing of the refused requests was stored.
        QCOMPARE(
            updateUser(*root, alice, {{QStringLiteral("PT_NAME"), QStringLiteral("Алиса")}}).status,
            qint32(proto::StatusOk));
        const DbResult surname
            = select(*root, QStringLiteral("SELECT get_object_param(%1, 'PT_SURNAME'),"
                                           " get_object_param(%1, 'PT_NAME')")
                                .arg(alice));
        QCOMPARE(surname.rowCount, 1);
        QVERIFY(surname.value(0, 0).isNull());
        QCOMPARE(surname.value(0, 1).toString(), QStringLiteral("Алиса"));
        QCOMPARE(select(*root, QStringLiteral("SELECT count(*) FROM object_params"
                                              " WHERE key = 'PT_LOGIN' AND value = 'bob'"))
                     .value(0, 0)
                     .toInt(),
                 0);
        QCOMPARE(other->login(QStringLiteral("alice"), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
    }
};

QTEST_GUILESS_MAIN(TestServerStorage)
#include "tst_serverstorage.moc"
