// Rights at the server: which operator template may do what to a user of which template,
// and the role templates each operator is offered, over real TCP.

#include "databasereader.h"
#include "serverharness.h"

#include <shared/objectpermission.h>
#include <shared/roletemplateinfo.h>

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace harness;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

class TestServerRights : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        ZR_SKIP_WITHOUT_TEST_DATABASE();
        QCOMPARE(m_server.start(), QString());
        m_root = m_server.rootClient();
        for (const char *t : {"RT_ADMINISTRATOR", "RT_HR", "RT_SECURITY", "RT_OPERATOR"})
            QVERIFY(addUser(*m_root, QString::fromLatin1(t).toLower(), QLatin1String(t)));
    }

    void matrix_data()
    {
        QTest::addColumn<QString>("operatorTemplate");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QString>("targetTemplate");
        QTest::addColumn<int>("status");
        const int ok = proto::StatusOk, no = proto::StatusForbidden;
        struct Row
        {
            const char *op, *operation, *target;
            int status;
        };
        const Row rows[] = {
            {"RT_ADMINISTRATOR", "create", "RT_OPERATOR", ok},
            {"RT_ADMINISTRATOR", "create", "RT_ADMINISTRATOR", no}, // own template
            {"RT_ADMINISTRATOR", "update", "RT_ADMINISTRATOR", ok}, // own allowed to manage
            {"RT_ADMINISTRATOR", "block", "RT_HR", ok},
            {"RT_ADMINISTRATOR", "delete", "RT_OPERATOR", ok},
            {"RT_ADMINISTRATOR", "prescribe", "RT_HR", ok},
            {"RT_ADMINISTRATOR", "permissions", "RT_OPERATOR", ok},
            {"RT_HR", "create", "RT_OPERATOR", ok},
            {"RT_HR", "create", "RT_ADMINISTRATOR", no},
            {"RT_HR", "update", "RT_OPERATOR", ok},
            {"RT_HR", "update", "RT_ADMINISTRATOR", no},
            {"RT_HR", "update", "RT_HR", no}, // colleagues of his own template
            {"RT_HR", "block", "RT_OPERATOR", ok},
            {"RT_HR", "delete", "RT_OPERATOR", ok},
            {"RT_HR", "delete", "RT_ADMINISTRATOR", no},
            {"RT_HR", "prescribe", "RT_SECURITY", ok},
            {"RT_HR", "prescribe", "RT_HR", no},
            {"RT_HR", "permissions", "RT_OPERATOR", ok},
            {"RT_SECURITY", "create", "RT_OPERATOR", no},
            {"RT_SECURITY", "update", "RT_OPERATOR", no},
            {"RT_SECURITY", "block", "RT_OPERATOR", ok},
            {"RT_SECURITY", "delete", "RT_OPERATOR", no},
            {"RT_SECURITY", "prescribe", "RT_HR", no},
            {"RT_SECURITY", "permissions", "RT_OPERATOR", no},
            {"RT_OPERATOR", "block", "RT_HR", no},
            {"RT_OPERATOR", "update", "RT_HR", no},
            {"RT_OPERATOR", "statedate", "RT_HR", no}, // the date of a block, without one
        };
        for (const Row &row : rows)
            QTest::addRow("%s %s %s", row.op, row.operation, row.target)
                << row.op << row.operation << row.target << row.status;
    }
    void matrix()
    {
        QFETCH(QString, operatorTemplate);
        QFETCH(QString, operation);
        QFETCH(QString, targetTemplate);
        QFETCH(int, status);
        auto op = m_server.client();
        QCOMPARE(op->login(operatorTemplate.toLower(), QStringLiteral("Passw0rd")).status,
                 qint32(proto::StatusOk));
        const QString login = QStringLiteral("t%1").arg(++m_counter);
        const TYPE_ID target
            = operation == QLatin1String("create") ? 0 : addUser(*m_root, login, targetTemplate);
        Command answer;
        if (operation == QLatin1String("create")) {
            addUser(*op, login, targetTemplate, QStringLiteral("Passw0rd"), nullptr, &answer);
        } else if (operation == QLatin1String("update") || operation == QLatin1String("block")
                   || operation == QLatin1String("statedate")) {
            const QString key
                = operation == QLatin1String("block")       ? QStringLiteral("PT_OBJECTSTATE")
                  : operation == QLatin1String("statedate") ? QStringLiteral("PT_OBJECTSTATEDATE")
                                                            : QStringLiteral("PT_SURNAME");
            answer = op->request(
                cmd::UpdateObject,
                ZRDataStream::pack(target, QStringLiteral("OT_USER"), quint32(0),
                                   QHash<QString, QString>{{key, QStringLiteral("b")}}));
        } else if (operation == QLatin1String("delete")) {
            answer = op->request(cmd::RemoveObject,
                                 ZRDataStream::pack(target, QStringLiteral("OT_USER")));
        } else if (operation == QLatin1String("prescribe")) {
            // The target starts as an operator and is given the template of the row.
            const TYPE_ID plain
                = addUser(*m_root, login + QLatin1Char('p'), QStringLiteral("RT_OPERATOR"));
            answer = op->request(cmd::PrescribeRoleTemplate,
                                 ZRDataStream::pack(plain, targetTemplate));
        } else {
            answer = op->request(cmd::UpdatePermissions,
                                 ZRDataStream::pack(target, QList<zeral::OBJECT_PERMISSION>{
                                                                {target, m_root->uid, 12}}));
        }
        QCOMPARE(answer.status, qint32(status));
        if (status != proto::StatusOk)
            QVERIFY(!answer.errorText().isEmpty());

        // The audit log holds the outcome, refused or not, with who asked.
        QSqlQuery audit = query(QStringLiteral("SELECT operator, session, status, at FROM "
                                               "audit_log ORDER BY id DESC LIMIT 1"));
        QVERIFY(audit.next());
        QCOMPARE(audit.value(0).toString(), operatorTemplate.toLower());
        QVERIFY(!audit.value(1).toString().isEmpty());
        QCOMPARE(audit.value(2).toInt(), status);
        QVERIFY(!audit.value(3).toString().isEmpty());

        // A refusal leaves the stored data as it was.
        if (status == proto::StatusOk || operation == QLatin1String("create"))
            return;
        QCOMPARE(scalar(QStringLiteral("SELECT count(*) FROM objects WHERE uid = %1").arg(target)),
                 QVariant(1));
        QCOMPARE(
            scalar(
                QStringLiteral("SELECT count(*) FROM permissions WHERE subject = %1").arg(target)),
            QVariant(0));
        QCOMPARE(scalar(QStringLiteral("SELECT count(*) FROM object_params WHERE uid = %1 AND "
                                       "value = 'b'")
                            .arg(target)),
                 QVariant(0));
    }

    void templatesOffered_data()
    {
        QTest::addColumn<QString>("operatorTemplate");
        QTest::addColumn<bool>("seesSupervisor");
        QTest::addColumn<bool>("seesAdministrator");
        QTest::addColumn<QStringList>("handOut");
        QTest::addColumn<bool>("ownAllowed");
        const QStringList all = {"RT_ADMINISTRATOR", "RT_AUDITOR",  "RT_HR",      "RT_MOBILE",
                                 "RT_MOBILE_CHIEF",  "RT_OPERATOR", "RT_SECURITY"};
        QTest::addRow("supervisor") << "RT_SUPERVISOR" << true << true << all << true;
        QStringList forAdmin = all;
        forAdmin.removeAll("RT_ADMINISTRATOR");
        QTest::addRow("administrator") << "RT_ADMINISTRATOR" << false << true << forAdmin << true;
        QStringList forHr = forAdmin;
        forHr.removeAll("RT_HR");
        QTest::addRow("hr") << "RT_HR" << false << false << forHr << false;
        QTest::addRow("security, no linking right")
            << "RT_SECURITY" << false << false << QStringList() << false;
    }
    void templatesOffered()
    {
        QFETCH(QString, operatorTemplate);
        QFETCH(bool, seesSupervisor);
        QFETCH(bool, seesAdministrator);
        QFETCH(QStringList, handOut);
        QFETCH(bool, ownAllowed);
        auto op = m_server.client();
        const QString login = operatorTemplate == QLatin1String("RT_SUPERVISOR")
                                  ? QStringLiteral("root")
                                  : operatorTemplate.toLower();
        op->login(login, login == QLatin1String("root") ? QStringLiteral("RootPass1")
                                                        : QStringLiteral("Passw0rd"));
        const Command answer
            = op->request(cmd::RoleTemplateInherit, ZRDataStream::pack(operatorTemplate));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        zeral::ROLETEMPLATES_HASH visible;
        QList<QString> offered;
        bool own = !ownAllowed;
        ZRDataStream in(answer.data);
        in >> visible;
        zeral::wire::readList(in, offered);
        in >> own;
        QCOMPARE(visible.contains(QStringLiteral("RT_SUPERVISOR")), seesSupervisor);
        QCOMPARE(visible.contains(QStringLiteral("RT_ADMINISTRATOR")), seesAdministrator);
        QCOMPARE(QStringList(offered), handOut);
        QCOMPARE(own, ownAllowed);
        QVERIFY(!visible.value(QStringLiteral("RT_HR")).roles.isEmpty());
    }

    void disconnectRules_data()
    {
        QTest::addColumn<QString>("operatorLogin");
        QTest::addColumn<QString>("targetLogin");
        QTest::addColumn<int>("status");
        QTest::addRow("administrator cuts security") << "rt_administrator"
                                                     << "rt_security" << 1;
        QTest::addRow("administrator can't cut root") << "rt_administrator"
                                                      << "root" << 4;
        QTest::addRow("security cuts operator") << "rt_security"
                                                << "rt_operator" << 1;
        QTest::addRow("security can't cut administrator") << "rt_security"
                                                          << "rt_administrator" << 4;
        QTest::addRow("hr lacks the right") << "rt_hr"
                                            << "rt_operator" << 4;
    }
    void disconnectRules()
    {
        QFETCH(QString, operatorLogin);
        QFETCH(QString, targetLogin);
        QFETCH(int, status);
        auto op = m_server.client();
        op->login(operatorLogin, QStringLiteral("Passw0rd"));
        auto target = m_server.client();
        target->login(targetLogin, targetLogin == QLatin1String("root")
                                       ? QStringLiteral("RootPass1")
                                       : QStringLiteral("Passw0rd"));
        QVERIFY(!target->session.isEmpty());
        const Command answer
            = op->request(cmd::DisconnectUsers, ZRDataStream::pack(qint32(1), target->session));
        QCOMPARE(answer.status, qint32(status));
        if (status == proto::StatusOk)
            QTRY_VERIFY(target->isClosed());
        else
            QVERIFY(!target->isClosed());
    }

private:
    QSqlQuery query(const QString &statement)
    {
        return harness::readDatabase(m_server.databasePath, statement);
    }
    QVariant scalar(const QString &statement)
    {
        QSqlQuery result = query(statement);
        return result.next() ? QVariant(result.value(0).toInt()) : QVariant();
    }

    Server m_server;
    std::unique_ptr<WireClient> m_root;
    int m_counter = 0;
};

QTEST_GUILESS_MAIN(TestServerRights)
#include "tst_serverrights.moc"
