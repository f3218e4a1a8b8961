// The demo's bulk accounts as the engine stores them: as many as asked for, with logins of
// their own, and each able to log in with the demo password.
#include "serverharness.h"

#include <server/engine/demo/demoorganisation.h>
#include <shared/datasets.h>
#include <shared/rolenames.h>

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

namespace {

// One answer of a statement on the engine's database, read beside it.
QVariantList column(const QString &path, const QString &statement)
{
    QVariantList values;
    {
        QSqlDatabase db = harness::sideDatabase(path, QStringLiteral("demo-users-reader"));
        if (db.open()) {
            QSqlQuery query(statement, db);
            while (query.next())
                values.append(query.value(0));
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("demo-users-reader"));
    return values;
}

int number(const QString &path, const QString &statement)
{
    return column(path, statement).value(0).toInt();
}

} // namespace

class TestServerDemoUsers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ZR_SKIP_WITHOUT_TEST_DATABASE(); }
    void storesLoginableAccounts_data()
    {
        QTest::addColumn<int>("employees");
        QTest::addColumn<int>("extraUsers");
        QTest::addRow("none") << 300 << 0;
        QTest::addRow("fewer than the staff") << 300 << 250;
        QTest::addRow("more than the staff") << 40 << 600;
    }
    void storesLoginableAccounts()
    {
        QFETCH(int, employees);
        QFETCH(int, extraUsers);
        harness::Server server;
        zeral::server::ServerEngine::Options options;
        options.demo = true;
        options.demoSize = employees;
        options.demoUsers = extraUsers;
        QCOMPARE(server.start(options), QString());
        const QString path = server.databasePath;

        const int ownAccounts = zeral::server::DemoOrganisation::build(employees, 1)
                                    .objects.value(QLatin1String(zeral::USER_DATANAME))
                                    .size();
        const int users = number(path, QStringLiteral("SELECT COUNT(*) FROM objects WHERE "
                                                      "type = 'OT_USER'"));
        QCOMPARE(users, ownAccounts + extraUsers + 1); // and root
        QCOMPARE(number(path, QStringLiteral("SELECT COUNT(DISTINCT value) FROM object_params "
                                             "WHERE key = 'PT_LOGIN'")),
                 users);
        QCOMPARE(number(path, QStringLiteral("SELECT COUNT(*) FROM passwords")), users);

        // The last accounts made: bulk ones when there are any.
        const QVariantList logins = column(
            path, QStringLiteral("SELECT login.value FROM object_params login "
                                 "JOIN object_params tmpl ON tmpl.uid = login.uid "
                                 "AND tmpl.key = 'PT_ROLETEMPLATE' AND tmpl.value = '%1' "
                                 "WHERE login.key = 'PT_LOGIN' AND NOT EXISTS (SELECT 1 FROM "
                                 "object_params s WHERE s.uid = login.uid AND "
                                 "s.key = 'PT_OBJECTSTATE') ORDER BY login.uid DESC LIMIT 3")
                      .arg(QLatin1String(zeral::roletemplate::OPERATOR)));
        QCOMPARE(logins.size(), 3);
        for (const QVariant &login : logins) {
            auto client = server.client();
            const Command answer
                = client->login(login.toString(), zeral::server::DemoOrganisation::demoPassword());
            QVERIFY2(answer.status == zeral::proto::StatusOk, qPrintable(login.toString()));
        }
    }
};

QTEST_GUILESS_MAIN(TestServerDemoUsers)
#include "tst_serverdemousers.moc"
