// data.exec_sql: the three confirmation statements of the users screen run as the screen
// sends them, and statements that would write or read secrets are refused.

#include "serverharness.h"

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace harness;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

namespace {

QString confirmationStatement(const QString &role)
{
    return QStringLiteral(
               "SELECT fingers.user_object_id, templates.template_format, templates.template, "
               "role_is_accessed( fingers.user_object_id, '%1' ),  "
               "get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  "
               "(SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = "
               "get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name "
               " "
               "FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE "
               "fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, '%1' ) "
               "AS \"hasrole\" FROM userid ) AS \"src\" WHERE hasrole = true );")
        .arg(role);
}

} // namespace

class TestServerSql : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        ZR_SKIP_WITHOUT_TEST_DATABASE();
        zeral::server::ServerEngine::Options options;
        options.clientSqlTimeLimitMs = 1000;
        QCOMPARE(m_server.start(options), QString());
        m_root = m_server.rootClient();
        m_guard = addUser(*m_root, QStringLiteral("guard"), QStringLiteral("RT_SECURITY"));
        m_clerk = addUser(*m_root, QStringLiteral("clerk"), QStringLiteral("RT_HR"));
        QVERIFY(m_guard && m_clerk);
        // Fingerprints come from the enrolment screen, which has no command of its own here:
        // they are put straight into the file, beside the running server.
        QSqlDatabase db = sideDatabase(m_server.databasePath, QStringLiteral("fp"));
        QVERIFY(db.open());
        QSqlQuery query(db);
        int templateUid = 0;
        for (TYPE_ID owner : {m_guard, m_guard, m_clerk}) {
            ++templateUid;
            const QString number = QStringLiteral("%1").arg(templateUid, 2, 10, QLatin1Char('0'));
            QVERIFY(query.exec(QStringLiteral("INSERT INTO templates VALUES (%1, 7, %2)")
                                   .arg(templateUid)
                                   .arg(blobLiteral(QStringLiteral("0a0b") + number))));
            QVERIFY(query.exec(QStringLiteral("INSERT INTO fingers VALUES (%1, %2, %3)")
                                   .arg(templateUid)
                                   .arg(owner)
                                   .arg(templateUid)));
        }
        query.clear();
        db.close();
    }
    void cleanupTestCase() { QSqlDatabase::removeDatabase(QStringLiteral("fp")); }

    void confirmationStatements_data()
    {
        QTest::addColumn<QString>("statement");
        const QString update = confirmationStatement(QStringLiteral("RL_CONFIRM_USER_UPDATE"));
        QTest::addRow("create") << confirmationStatement(QStringLiteral("RL_CONFIRM_USER_CREATE"));
        QTest::addRow("delete") << confirmationStatement(QStringLiteral("RL_CONFIRM_USER_DELETE"));
        QTest::addRow("update, ending in a blank") << update + QLatin1Char(' ');
    }
    void confirmationStatements()
    {
        QFETCH(QString, statement);
        const DbResult result = exec(statement, proto::StatusOk);
        // The guard holds the confirming roles with two fingers; the clerk holds none.
        QCOMPARE(result.rowCount, 2);
        QCOMPARE(result.columnCount, 6);
        for (int row = 0; row < 2; ++row) {
            QCOMPARE(result.value(row, 0).toUInt(), m_guard);
            QCOMPARE(result.value(row, 1).toUInt(), 7u);
            QVERIFY(result.value(row, 2).toByteArray().startsWith("\x0a\x0b"));
            QCOMPARE(result.value(row, 3).toBool(), true);
            QCOMPARE(result.value(row, 4).toString(), QStringLiteral("RT_SECURITY"));
            QCOMPARE(result.value(row, 5).toString(), QStringLiteral("Служба охраны"));
        }
        QVERIFY(result.value(0, 2) != result.value(1, 2));
    }

    void blockedUserDoesNotConfirm()
    {
        const Command blocked
            = m_root->request(cmd::UpdateObject,
                              ZRDataStream::pack(m_guard, QStringLiteral("OT_USER"), quint32(0),
                                                 QHash<QString, QString>{{"PT_OBJECTSTATE", "b"}}));
        QCOMPARE(blocked.status, qint32(proto::StatusOk));
        QCOMPARE(
            exec(confirmationStatement(QStringLiteral("RL_CONFIRM_USER_UPDATE")), proto::StatusOk)
                .rowCount,
            0);
        m_root->request(cmd::UpdateObject,
                        ZRDataStream::pack(m_guard, QStringLiteral("OT_USER"), quint32(0),
                                           QHash<QString, QString>{{"PT_OBJECTSTATE", ""}}));
    }

    void writesAreRefused_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<int>("status");
        QTest::addRow("insert") << "INSERT INTO settings VALUES ('x', 'y')" << 4;
        QTest::addRow("update") << "UPDATE objects SET type = 'OT_X'" << 4;
        QTest::addRow("delete") << "DELETE FROM fingers" << 4;
        QTest::addRow("drop") << "DROP TABLE audit_log" << 4;
        QTest::addRow("password hashes") << "SELECT hash FROM passwords" << 4;
        QTest::addRow("mail texts") << "SELECT * FROM mail_outbox" << 4;
        QTest::addRow("two statements in one") << "SELECT 1; DELETE FROM fingers" << 2;
        QTest::addRow("not SQL") << "SELEKT nothing" << 2;
        // Statements that would hold the server or flood its memory are stopped.
        QTest::addRow("endless recursion")
            << "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) "
               "SELECT count(*) FROM c"
            << 2;
        if (!onPostgres()) {
            QTest::addRow("pragma") << "PRAGMA journal_mode=DELETE" << 4;
            QTest::addRow("attach") << "ATTACH DATABASE '/tmp/x.db' AS x" << 4;
            QTest::addRow("huge value") << "SELECT randomblob(100000000)" << 2;
            QTest::addRow("huge answer")
                << "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c LIMIT 100) "
                   "SELECT randomblob(1000000) FROM c"
                << 2;
            return;
        }
        // What a statement could do on PostgreSQL to leave its read-only role: every one of
        // them refused, and no hash read.
        QTest::addRow("set role") << "SET ROLE zr" << 4;
        QTest::addRow("reset role") << "RESET ROLE" << 4;
        QTest::addRow("commit") << "COMMIT" << 4;
        QTest::addRow("set_config")
            << "SELECT set_config('role', 'zr', true), (SELECT count(*) FROM passwords)" << 4;
        QTest::addRow("a query in a text")
            << "SELECT query_to_xml('SELECT hash FROM passwords', true, false, '')" << 4;
        QTest::addRow("procedural block") << "DO $$ BEGIN PERFORM 1; END $$" << 4;
        QTest::addRow("copy out") << "COPY objects TO STDOUT" << 4;
        QTest::addRow("server files") << "SELECT pg_read_file('/etc/hostname')" << 4;
        QTest::addRow("huge value") << "SELECT repeat('x', 40000000)" << 2;
        QTest::addRow("huge answer")
            << "SELECT repeat('x', 1000000) FROM generate_series(1, 100)" << 2;
    }
    void writesAreRefused()
    {
        QFETCH(QString, statement);
        QFETCH(int, status);
        exec(statement, status);
        // Whatever the statement tried, the next one still may not read the hashes.
        exec(QStringLiteral("SELECT count(*) FROM passwords"), proto::StatusForbidden);
        // Nothing changed, and the connection is read-write again for the server's own work.
        QCOMPARE(exec(QStringLiteral("SELECT COUNT(*) FROM fingers"), proto::StatusOk)
                     .value(0, 0)
                     .toInt(),
                 3);
        QVERIFY(addUser(*m_root, QStringLiteral("after%1").arg(++m_counter), QString()));
    }

private:
    DbResult exec(const QString &statement, int status)
    {
        DbQuery query;
        query.statements = QStringList(statement);
        const Command answer = m_root->request(cmd::ExecSql, ZRDataStream::pack(query));
        [&] {
            QCOMPARE(answer.status, qint32(status));
        }();
        DbResult result;
        if (answer.status == proto::StatusOk) {
            ZRDataStream in(answer.data);
            in >> result;
        }
        return result;
    }

    Server m_server;
    std::unique_ptr<WireClient> m_root;
    TYPE_ID m_guard = 0, m_clerk = 0;
    int m_counter = 0;
};

QTEST_GUILESS_MAIN(TestServerSql)
#include "tst_serversql.moc"
