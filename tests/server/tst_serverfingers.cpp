// Fingerprint enrolment at the server over real TCP: enrol, list, replace, remove; who may,
// what is refused and that a refusal changes nothing; the new role on an older database.

#include "serverharness.h"

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <shared/fingerprintformat.h>
#include <shared/roleentry.h>

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace harness;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

class TestServerFingers : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        ZR_SKIP_WITHOUT_TEST_DATABASE();
        QCOMPARE(m_server.start(), QString());
        m_root = m_server.rootClient();
        for (const char *login : {"admin", "admin2", "clerk", "guard", "mobile", "target"})
            m_uids[login] = addUser(*m_root, QLatin1String(login), templateOf(login));
        QVERIFY(!m_uids.values().contains(0));
        m_uids["root"] = m_root->uid;
        m_uids["unknown"] = 99999;
        m_uids["not a user"]
            = select("SELECT min(uid) FROM objects WHERE type != 'OT_USER'").value(0, 0).toUInt();
        QCOMPARE(enrol(*m_root, "root", 3, "root's").status, qint32(proto::StatusOk));
    }

    void enrolListReplaceRemove()
    {
        for (const auto &[finger, bytes] :
             QList<QPair<int, QByteArray>>{{6, "old"}, {1, "one"}, {6, "new"}})
            QCOMPARE(enrol(*m_root, "target", finger, bytes).status, qint32(proto::StatusOk));
        QCOMPARE(fingers(*m_root, "target"), (QList<qint32>{1, 6}));
        QCOMPARE(stored().filter("target 6"), QStringList("target 6 new")); // replaced
        QCOMPARE(remove(*m_root, "target", 6).status, qint32(proto::StatusOk));
        QCOMPARE(fingers(*m_root, "target"), QList<qint32>{1});
        QCOMPARE(select("SELECT detail FROM audit_log WHERE command = 'data.remove_finger'")
                     .value(0, 0)
                     .toString(),
                 QStringLiteral("removed finger 6"));
    }

    void access_data()
    {
        for (const char *column : {"by", "command", "user"})
            QTest::addColumn<QByteArray>(column);
        for (const char *column : {"finger", "size", "status"})
            QTest::addColumn<int>(column);
        const int ok = 1, bad = 2, no = 4, none = 5, bio = 18, max = 64 * 1024;
        const struct
        {
            const char *name, *by, *command, *user;
            int finger, size, status;
        } rows[] = {
            {"supervisor, finger 0", "root", "enrol", "admin", 0, 9, ok},
            {"admin, 64 KiB", "admin", "enrol", "target", 9, max, ok},
            {"admin, colleague", "admin", "enrol", "admin2", 2, 9, ok},
            {"admin, himself", "admin", "enrol", "admin", 4, 9, ok},
            {"admin, supervisor", "admin", "enrol", "root", 2, 9, no},
            {"admin removes supervisor's", "admin", "remove", "root", 3, 0, no},
            {"HR", "clerk", "enrol", "target", 2, 9, bio},
            {"HR removes", "clerk", "remove", "target", 1, 0, bio},
            {"security, himself", "guard", "enrol", "guard", 2, 9, bio},
            {"unknown user", "root", "enrol", "unknown", 2, 9, none},
            {"not a user", "root", "enrol", "not a user", 2, 9, none},
            {"missing finger", "root", "remove", "target", 8, 0, none},
            {"finger -1", "root", "enrol", "target", -1, 9, bad},
            {"finger 10", "root", "remove", "target", 10, 0, bad},
            {"empty template", "root", "enrol", "target", 2, 0, bad},
            {"over 64 KiB", "root", "enrol", "target", 2, max + 1, bad},
            {"no template", "root", "truncated", "target", 2, 0, bad},
            {"reads own", "mobile", "list", "mobile", 0, 0, ok},
            {"reads another's", "mobile", "list", "target", 0, 0, no},
            {"lists unknown", "root", "list", "unknown", 0, 0, none},
        };
        for (const auto &row : rows)
            QTest::newRow(row.name) << QByteArray(row.by) << QByteArray(row.command)
                                    << QByteArray(row.user) << row.finger << row.size << row.status;
    }
    void access()
    {
        QFETCH(QByteArray, by);
        QFETCH(QByteArray, command);
        QFETCH(QByteArray, user);
        QFETCH(int, finger);
        QFETCH(int, size);
        QFETCH(int, status);
        std::unique_ptr<WireClient> op;
        if (by != "root") {
            op = m_server.client();
            QCOMPARE(op->login(QLatin1String(by), QStringLiteral("Passw0rd")).status, 1);
        }
        WireClient &client = op ? *op : *m_root;
        const QStringList before = stored();
        const QByteArray bytes(size, 'f');
        const TYPE_ID uid = m_uids.value(user);
        const Command answer
            = command == "enrol"    ? enrol(client, user, finger, bytes)
              : command == "remove" ? remove(client, user, finger)
              : command == "list"
                  ? client.request(cmd::GetUserFingers, ZRDataStream::pack(uid))
                  : client.request(cmd::EnrolFinger, ZRDataStream::pack(uid, finger, quint32(7)));
        QCOMPARE(answer.status, qint32(status));
        if (status != proto::StatusOk) {
            QVERIFY(!answer.errorText().isEmpty());
            QCOMPARE(stored(), before);
        } else if (command == "enrol") {
            QVERIFY(stored().contains(
                QString::fromLatin1(user + ' ' + QByteArray::number(finger) + ' ' + bytes)));
        }
    }

    void confirmationFindsEnrolled()
    {
        QCOMPARE(enrol(*m_root, "guard", 5, "guard's print").status, qint32(proto::StatusOk));
        const DbResult found = select(
            "SELECT fingers.user_object_id, templates.template_format, templates.template FROM "
            "fingers INNER JOIN templates ON (fingers.finger_id = templates.uid) WHERE "
            "fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed(id, "
            "'RL_CONFIRM_USER_UPDATE') AS \"hasrole\" FROM userid) AS \"src\" WHERE hasrole = "
            "true);");
        // The guard confirms, and so do those in charge; the target (an operator) doesn't.
        QMultiHash<TYPE_ID, QByteArray> templates;
        for (int row = 0; row < found.rowCount; ++row) {
            QCOMPARE(found.value(row, 1).toUInt(), zeral::SIMULATED_FINGERPRINT_FORMAT);
            templates.insert(found.value(row, 0).toUInt(), found.value(row, 2).toByteArray());
        }
        QCOMPARE(templates.values(m_uids.value("guard")), QList<QByteArray>{"guard's print"});
        QVERIFY(templates.contains(m_root->uid) && !templates.contains(m_uids.value("target")));
    }

    // Templates of the simulated reader and of libfprint live side by side: the fingers list
    // tells each finger's format after the list itself, and the users screen's confirmation
    // statement still gives its six columns, each template with its own format and bytes.
    void bothFormatsSideBySide()
    {
        const QByteArray simulated(zeral::SIMULATED_FINGERPRINT_SIZE, 's');
        const QByteArray print = QByteArray("FP3") + QByteArray(1200, 'p');
        m_uids["twokinds"] = addUser(*m_root, QStringLiteral("twokinds"), "RT_ADMINISTRATOR");
        QVERIFY(m_uids.value("twokinds"));
        const auto enrolAs = [this](qint32 finger, quint32 format, const QByteArray &bytes) {
            return m_root
                ->request(cmd::EnrolFinger,
                          ZRDataStream::pack(m_uids.value("twokinds"), finger, format, bytes))
                .status;
        };
        QCOMPARE(enrolAs(7, zeral::SIMULATED_FINGERPRINT_FORMAT, simulated), qint32(proto::StatusOk));
        QCOMPARE(enrolAs(8, zeral::LIBFPRINT_FINGERPRINT_FORMAT, print), qint32(proto::StatusOk));
        // A finger enrolled again with the other reader takes that reader's format.
        QCOMPARE(enrolAs(9, zeral::SIMULATED_FINGERPRINT_FORMAT, simulated), qint32(proto::StatusOk));
        QCOMPARE(enrolAs(9, zeral::LIBFPRINT_FINGERPRINT_FORMAT, print), qint32(proto::StatusOk));

        const Command answer = m_root->request(cmd::GetUserFingers,
                                               ZRDataStream::pack(m_uids.value("twokinds")));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        QList<qint32> fingers;
        QList<quint32> formats;
        ZRDataStream in(answer.data);
        in >> fingers >> formats;
        QCOMPARE(in.status(), QDataStream::Ok);
        const quint32 sim = zeral::SIMULATED_FINGERPRINT_FORMAT;
        const quint32 lib = zeral::LIBFPRINT_FINGERPRINT_FORMAT;
        QCOMPARE(fingers, (QList<qint32>{7, 8, 9}));
        QCOMPARE(formats, (QList<quint32>{sim, lib, lib}));

        // The statement exactly as the users screen sends it.
        const DbResult found = select(
            R"sql(SELECT fingers.user_object_id, templates.template_format, templates.template, role_is_accessed( fingers.user_object_id, 'RL_CONFIRM_USER_UPDATE' ),  get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  (SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name  FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, 'RL_CONFIRM_USER_UPDATE' ) AS "hasrole" FROM userid ) AS "src" WHERE hasrole = true );)sql");
        QCOMPARE(found.columnCount, 6);
        QStringList ofAdmin;
        for (int row = 0; row < found.rowCount; ++row) {
            if (found.value(row, 0).toUInt() != m_uids.value("twokinds"))
                continue;
            const quint32 format = found.value(row, 1).toUInt();
            const QByteArray bytes = found.value(row, 2).toByteArray();
            QCOMPARE(bytes, format == lib ? print : format == sim ? simulated : QByteArray());
            QCOMPARE(found.value(row, 3).toInt(), 1);
            QCOMPARE(found.value(row, 4).toString(), QStringLiteral("RT_ADMINISTRATOR"));
            QVERIFY(!found.value(row, 5).toString().isEmpty());
            ofAdmin.append(QString::number(format, 16));
        }
        ofAdmin.sort();
        QCOMPARE(ofAdmin, (QStringList{QString::number(lib, 16), QString::number(lib, 16),
                                       QString::number(sim, 16)}));
    }

    // A database filled before the role existed gets it at the next start, for the
    // templates in charge only.
    void roleReachesOlderDatabase()
    {
        m_root.reset();
        m_server.engine.reset();
        {
            QSqlDatabase db = sideDatabase(m_server.databasePath, "old");
            QVERIFY(db.open());
            QSqlQuery query(db);
            QVERIFY(query.exec("DELETE FROM role_template_roles WHERE role LIKE '%BIOMETRICS%'"));
            QVERIFY(query.exec("DELETE FROM roles WHERE name LIKE '%BIOMETRICS%'"));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("old"));
        QCOMPARE(m_server.start(), QString());
        m_root = m_server.rootClient();
        const DbResult holders
            = select(templatesHolding(QStringLiteral("RL_USER_BIOMETRICS_EDIT")));
        QCOMPARE(holders.value(0, 0).toString(), QStringLiteral("RT_ADMINISTRATOR,RT_SUPERVISOR"));
        QList<zeral::RoleEntry> catalogue;
        ZRDataStream in(m_root->request(cmd::RoleCatalogue).data);
        zeral::wire::readList(in, catalogue);
        const int at = catalogue.indexOf(
            {"RL_USER_BIOMETRICS_EDIT", "Редактирование биометрических данных", "users", false});
        QVERIFY(at > 0);
        QCOMPARE(catalogue.at(at - 1).key, QStringLiteral("RL_USER_ONLINE_SHOW"));
    }

private:
    static QString templateOf(const QByteArray &login)
    {
        return login.startsWith("admin") ? "RT_ADMINISTRATOR"
               : login == "clerk"        ? "RT_HR"
               : login == "guard"        ? "RT_SECURITY"
               : login == "mobile"       ? "RT_MOBILE"
                                         : "RT_OPERATOR";
    }
    Command enrol(WireClient &by, const QByteArray &user, qint32 finger, const QByteArray &bytes)
    {
        return by.request(cmd::EnrolFinger,
                          ZRDataStream::pack(m_uids.value(user), finger,
                                             zeral::SIMULATED_FINGERPRINT_FORMAT, bytes));
    }
    Command remove(WireClient &by, const QByteArray &user, qint32 finger)
    {
        return by.request(cmd::RemoveFinger, ZRDataStream::pack(m_uids.value(user), finger));
    }
    QList<qint32> fingers(WireClient &by, const QByteArray &user)
    {
        const Command answer
            = by.request(cmd::GetUserFingers, ZRDataStream::pack(m_uids.value(user)));
        QList<qint32> result;
        ZRDataStream in(answer.data);
        in >> result;
        return answer.status == proto::StatusOk ? result : QList<qint32>{-1};
    }
    DbResult select(const QString &statement) { return harness::select(*m_root, statement); }
    // Every stored template as "login finger bytes", read through the server.
    QStringList stored()
    {
        const DbResult rows = select(
            "SELECT get_object_param(f.user_object_id, 'PT_LOGIN'), f.finger, t.template FROM "
            "fingers f JOIN templates t ON t.uid = f.finger_id ORDER BY 1, 2, 3");
        QStringList result;
        for (int row = 0; row < rows.rowCount; ++row)
            result.append(rows.value(row, 0).toString() + ' ' + rows.value(row, 1).toString() + ' '
                          + QString::fromUtf8(rows.value(row, 2).toByteArray()));
        return result;
    }

    Server m_server;
    std::unique_ptr<WireClient> m_root;
    QHash<QByteArray, TYPE_ID> m_uids;
};

QTEST_GUILESS_MAIN(TestServerFingers)
#include "tst_serverfingers.moc"
