// The audit log as the studio reads it, over real TCP against the real engine: pages newest
// first without gaps or doubles while rows are added, each filter, the bounds that refuse a
// hostile query, the right it needs, the pushes of new rows, names kept for removed objects,
// the confirmer of a change, and the role and columns an older database gets at its next start.

#include "serverharness.h"

#include <shared/auditfilter.h>
#include <shared/auditrecord.h>
#include <shared/roleentry.h>

#include <QSqlDatabase>
#include <QSqlQuery>

Q_DECLARE_METATYPE(zeral::AuditFilter)

using namespace harness;
using zeral::AuditFilter;
using zeral::AuditRecord;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

namespace {

struct Page
{
    qint32 status = 0;
    QString text;
    QList<AuditRecord> rows;
    bool more = false;
};

Page readPage(WireClient &by, const AuditFilter &filter, qint32 size = 500, qint64 before = 0)
{
    const Command answer = by.request(cmd::AuditLog, ZRDataStream::pack(before, size, filter));
    Page page;
    page.status = answer.status;
    if (answer.status != proto::StatusOk) {
        page.text = answer.errorText();
        return page;
    }
    ZRDataStream in(answer.data);
    zeral::wire::readList(in, page.rows);
    in >> page.more;
    if (in.status() != QDataStream::Ok || !in.atEnd())
        page.status = -1;
    return page;
}

QList<qint64> idsOf(const QList<AuditRecord> &rows)
{
    QList<qint64> ids;
    for (const AuditRecord &row : rows)
        ids.append(row.id);
    return ids;
}

QList<qint64> idsOf(const DbResult &result)
{
    QList<qint64> ids;
    for (int row = 0; row < result.rowCount; ++row)
        ids.append(result.value(row, 0).toLongLong());
    return ids;
}

AuditFilter byCommand(const char *command)
{
    AuditFilter filter;
    filter.command = QLatin1String(command);
    return filter;
}

} // namespace

class TestServerAudit : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void pagesHaveNoGapsNorDoubles();
    void filters_data();
    void filters();
    void hostileQueriesAreRefused_data();
    void hostileQueriesAreRefused();
    void needsTheRight();
    void newRowsArePushedToReaders();
    void removedObjectKeepsItsName();
    void confirmerIsRecorded();
    void confirmerMustBeAbleToConfirm_data();
    void confirmerMustBeAbleToConfirm();
    void olderDatabaseGetsRoleAndColumns();

private:
    Command rename(WireClient &by, TYPE_ID uid, const QString &surname);
    QList<qint64> expectedIds(const QString &where);

    Server m_server;
    std::unique_ptr<WireClient> m_root;
    std::unique_ptr<WireClient> m_auditor;
    std::unique_ptr<WireClient> m_clerk;
    QHash<QByteArray, TYPE_ID> m_uids;
    // The rows written on the second day of the test's clock, by id.
    qint64 m_secondDayFirst = 0;
    qint64 m_secondDayLast = 0;
};

Command TestServerAudit::rename(WireClient &by, TYPE_ID uid, const QString &surname)
{
    return by.request(cmd::UpdateObject,
                      ZRDataStream::pack(quint32(uid), QStringLiteral("OT_USER"), quint32(0),
                                         QHash<QString, QString>{{"PT_SURNAME", surname}}));
}

QList<qint64> TestServerAudit::expectedIds(const QString &where)
{
    return idsOf(select(*m_root, "SELECT id FROM audit_log WHERE " + where + " ORDER BY id DESC"));
}

void TestServerAudit::initTestCase()
{
    ZR_SKIP_WITHOUT_TEST_DATABASE();
    QCOMPARE(m_server.start(), QString());
    m_root = m_server.rootClient();
    const QList<QPair<const char *, const char *>> users
        = {{"auditor", "RT_AUDITOR"},       {"clerk", "RT_HR"},
           {"guard", "RT_SECURITY"},        {"viewer", "RT_OPERATOR"},
           {"blockedguard", "RT_SECURITY"}, {"target", "RT_OPERATOR"}};
    for (const auto &[login, roleTemplate] : users)
        m_uids[login] = addUser(*m_root, QLatin1String(login), QLatin1String(roleTemplate));
    QVERIFY(!m_uids.values().contains(0));
    QCOMPARE(rename(*m_root, m_uids["guard"], QStringLiteral("Ёжиков")).status,
             qint32(proto::StatusOk));
    QCOMPARE(m_root
                 ->request(cmd::UpdateObject,
                           ZRDataStream::pack(quint32(m_uids["blockedguard"]),
                                              QStringLiteral("OT_USER"), quint32(0),
                                              QHash<QString, QString>{{"PT_OBJECTSTATE", "b"}}))
                 .status,
             qint32(proto::StatusOk));
    m_auditor = m_server.client();
    QCOMPARE(m_auditor->login("auditor", "Passw0rd").status, qint32(proto::StatusOk));
    m_clerk = m_server.client();
    QCOMPARE(m_clerk->login("clerk", "Passw0rd").status, qint32(proto::StatusOk));

    // A second day: the clerk's changes and a refusal, for the filters of time and result.
    m_server.now = m_server.now.addDays(1);
    m_secondDayFirst = expectedIds("true").value(0) + 1;
    for (int i = 0; i < 3; ++i)
        QCOMPARE(rename(*m_clerk, m_uids["target"], QStringLiteral("Ёлкина-%1").arg(i)).status,
                 qint32(proto::StatusOk));
    QCOMPARE(rename(*m_clerk, m_root->uid, QStringLiteral("Нельзя")).status,
             qint32(proto::StatusForbidden));
    m_secondDayLast = expectedIds("true").value(0);
    m_server.now = m_server.now.addDays(1);
}

void TestServerAudit::pagesHaveNoGapsNorDoubles()
{
    for (int i = 0; i < 20; ++i)
        QCOMPARE(rename(*m_root, m_uids["target"], QStringLiteral("Имя %1").arg(i)).status,
                 qint32(proto::StatusOk));
    const AuditFilter filter = byCommand(cmd::UpdateObject);
    QList<AuditRecord> seen;
    Page page = readPage(*m_auditor, filter, 7);
    QCOMPARE(page.status, qint32(proto::StatusOk));
    const qint64 newestAtStart = page.rows.constFirst().id;
    seen += page.rows;
    while (page.more) {
        // Rows written between the pages must shift nothing.
        QCOMPARE(rename(*m_root, m_uids["target"], QStringLiteral("Между")).status,
                 qint32(proto::StatusOk));
        page = readPage(*m_auditor, filter, 7, seen.constLast().id);
        QCOMPARE(page.status, qint32(proto::StatusOk));
        QVERIFY(page.rows.size() <= 7);
        seen += page.rows;
    }
    QCOMPARE(idsOf(seen),
             expectedIds(
                 QStringLiteral("command = 'data.update_object' AND id <= %1").arg(newestAtStart)));
    QVERIFY(seen.size() > 20);
    // And the newest first page now starts with the rows written meanwhile.
    QVERIFY(readPage(*m_auditor, filter, 1).rows.constFirst().id > newestAtStart);
}

void TestServerAudit::filters_data()
{
    QTest::addColumn<AuditFilter>("filter");
    QTest::addColumn<QString>("where"); // the same rows, as the test states them
    const auto make = [](auto change) {
        AuditFilter filter;
        change(filter);
        return filter;
    };
    QTest::addRow("operator, any case")
        << make([](AuditFilter &f) { f.operatorLogin = "CLERK"; }) << "operator = 'clerk'";
    QTest::addRow("action") << make([](AuditFilter &f) { f.command = "data.add_object"; })
                            << "command = 'data.add_object'";
    QTest::addRow("refusals") << make([](AuditFilter &f) { f.result = AuditFilter::RefusalsOnly; })
                              << "status <> 1";
    QTest::addRow("successes") << make([](AuditFilter &f) { f.result = AuditFilter::SuccessOnly; })
                               << "status = 1";
    QTest::addRow("object by uid")
        << make([this](AuditFilter &f) { f.object = QString::number(m_uids["guard"]); })
        << QStringLiteral("object = %1").arg(m_uids["guard"]);
    // Only the guard is named "Ёжиков", since his rename; the case of Cyrillic is folded too.
    QTest::addRow("object by part of its name")
        << make([](AuditFilter &f) { f.object = QStringLiteral("ёЖИК"); })
        << QStringLiteral("object = %1 AND command = 'data.update_object'").arg(m_uids["guard"]);
    QTest::addRow("time range") << make([this](AuditFilter &f) {
        f.from = m_server.now.addDays(-1).date().startOfDay();
        f.to = m_server.now.date().startOfDay();
    }) << QStringLiteral("id BETWEEN %1 AND %2").arg(m_secondDayFirst).arg(m_secondDayLast);
    QTest::addRow("refusals of the clerk on the second day") << make([this](AuditFilter &f) {
        f.operatorLogin = "clerk";
        f.result = AuditFilter::RefusalsOnly;
        f.from = m_server.now.addDays(-1).date().startOfDay();
    }) << QStringLiteral("operator = 'clerk' AND status <> 1 AND id >= %1").arg(m_secondDayFirst);
}

void TestServerAudit::filters()
{
    QFETCH(AuditFilter, filter);
    QFETCH(QString, where);
    const QList<qint64> expected = expectedIds(where);
    QVERIFY(!expected.isEmpty());
    QVERIFY(expected.size() < expectedIds("true").size()); // the filter narrows
    const Page page = readPage(*m_auditor, filter);
    QCOMPARE(page.status, qint32(proto::StatusOk));
    QCOMPARE(idsOf(page.rows), expected);
    for (const AuditRecord &row : page.rows)
        QVERIFY(filter.matches(row)); // the studio's test of a pushed row agrees
}

void TestServerAudit::hostileQueriesAreRefused_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("sentence"); // a part of the refusal
    const AuditFilter none;
    AuditFilter longText;
    longText.object = QString(AuditFilter::MaxTextLength + 1, QLatin1Char('%'));
    AuditFilter longLogin;
    longLogin.operatorLogin = QString(100000, QLatin1Char('a'));
    AuditFilter badResult;
    badResult.result = 7;
    AuditFilter backwards;
    backwards.from = QDateTime(QDate(2024, 3, 2), QTime(0, 0), Qt::UTC);
    backwards.to = backwards.from;
    const QString pageText = QStringLiteral("от 1 до 500 строк");
    QTest::addRow("page of none") << ZRDataStream::pack(qint64(0), qint32(0), none) << pageText;
    QTest::addRow("negative page") << ZRDataStream::pack(qint64(0), qint32(-5), none) << pageText;
    QTest::addRow("page too large") << ZRDataStream::pack(qint64(0), qint32(501), none) << pageText;
    QTest::addRow("huge page") << ZRDataStream::pack(qint64(0), qint32(2000000000), none)
                               << pageText;
    QTest::addRow("negative position")
        << ZRDataStream::pack(qint64(-1), qint32(10), none) << QStringLiteral("позиция");
    QTest::addRow("long object text")
        << ZRDataStream::pack(qint64(0), qint32(10), longText) << QStringLiteral("не больше 200");
    QTest::addRow("huge login") << ZRDataStream::pack(qint64(0), qint32(10), longLogin)
                                << QStringLiteral("не больше 200");
    QTest::addRow("unknown result")
        << ZRDataStream::pack(qint64(0), qint32(10), badResult) << QStringLiteral("результата");
    QTest::addRow("empty period") << ZRDataStream::pack(qint64(0), qint32(10), backwards)
                                  << QStringLiteral("раньше");
    QTest::addRow("cut short") << ZRDataStream::pack(qint64(0), qint32(10))
                               << QStringLiteral("не читается");
    QTest::addRow("something left over")
        << ZRDataStream::pack(qint64(0), qint32(10), none, qint32(1))
        << QStringLiteral("не читается");
}

void TestServerAudit::hostileQueriesAreRefused()
{
    QFETCH(QByteArray, payload);
    QFETCH(QString, sentence);
    const int rowsBefore = expectedIds("true").size();
    const Command answer = m_auditor->request(cmd::AuditLog, payload);
    QCOMPARE(answer.status, qint32(proto::StatusMalformed));
    QVERIFY2(answer.errorText().contains(sentence), qPrintable(answer.errorText()));
    // The refusal is in the log, and nothing else came with it.
    QCOMPARE(expectedIds("true").size(), rowsBefore + 1);
    QCOMPARE(select(*m_root, "SELECT command, status, operator FROM audit_log ORDER BY id DESC "
                             "LIMIT 1")
                 .value(0, 0)
                 .toString(),
             QLatin1String(cmd::AuditLog));
}

void TestServerAudit::needsTheRight()
{
    for (const char *login : {"viewer", "clerk"}) {
        auto client = m_server.client();
        QCOMPARE(client->login(QLatin1String(login), "Passw0rd").status, qint32(proto::StatusOk));
        const Page page = readPage(*client, {});
        QCOMPARE(page.status, qint32(proto::StatusForbidden));
        QVERIFY(page.text.contains(QStringLiteral("журнала действий")));
    }
    for (WireClient *client : {m_root.get(), m_auditor.get()})
        QCOMPARE(readPage(*client, {}, 1).status, qint32(proto::StatusOk));
    QVERIFY(m_auditor->roles.contains(QStringLiteral("RL_AUDIT_SHOW")));
}

void TestServerAudit::newRowsArePushedToReaders()
{
    auto viewer = m_server.client();
    QCOMPARE(viewer->login("viewer", "Passw0rd").status, qint32(proto::StatusOk));
    m_auditor->pushes.clear();
    QCOMPARE(rename(*m_clerk, m_uids["target"], QStringLiteral("Ёлкина")).status,
             qint32(proto::StatusOk));
    QCOMPARE(rename(*m_clerk, m_root->uid, QStringLiteral("Нельзя")).status,
             qint32(proto::StatusForbidden));
    // The change's push comes before its answer; wait for the refusal's with a request.
    QCOMPARE(readPage(*m_auditor, {}, 2).status, qint32(proto::StatusOk));
    const Page newest = readPage(*m_auditor, {}, 3);
    QList<AuditRecord> pushed;
    for (const Command &push : m_auditor->pushesNamed(cmd::AuditAppended)) {
        AuditRecord row;
        ZRDataStream in(push.data);
        in >> row;
        QVERIFY(in.status() == QDataStream::Ok && in.atEnd());
        pushed.append(row);
    }
    // Two rows, the change and the refusal: the auditor's own reads write none.
    QCOMPARE(pushed.size(), 2);
    QCOMPARE(pushed.at(1), newest.rows.at(0));
    QCOMPARE(pushed.at(0), newest.rows.at(1));
    QCOMPARE(pushed.at(0).objectName, QStringLiteral("Ёлкина (target)"));
    QCOMPARE(pushed.at(1).status, qint32(proto::StatusForbidden));
    QVERIFY(viewer->pushesNamed(cmd::AuditAppended).isEmpty());
    QVERIFY(!viewer->pushesNamed(cmd::DataChanged).isEmpty()); // he hears the change itself
}

void TestServerAudit::removedObjectKeepsItsName()
{
    zeral::ObjectInfo user;
    user.type = QStringLiteral("OT_USER");
    user.parameters = {{"PT_LOGIN", "petrov"}, {"PT_SURNAME", "Петров"}, {"PT_NAME", "Пётр"}};
    const Command added
        = m_root->request(cmd::AddObject, ZRDataStream::pack(user, QList<zeral::_INHERIT_DATA>()));
    QCOMPARE(added.status, qint32(proto::StatusOk));
    qint32 uid = 0;
    ZRDataStream(added.data) >> uid;
    QCOMPARE(m_root
                 ->request(cmd::RemoveObject,
                           ZRDataStream::pack(quint32(uid), QStringLiteral("OT_USER")))
                 .status,
             qint32(proto::StatusOk));
    // Gone from the store, still named in the log, and found by a part of that name.
    QCOMPARE(select(*m_root, QStringLiteral("SELECT count(*) FROM objects WHERE uid = %1").arg(uid))
                 .value(0, 0)
                 .toInt(),
             0);
    AuditFilter filter;
    filter.object = QStringLiteral("пётр");
    const Page page = readPage(*m_auditor, filter);
    QCOMPARE(page.status, qint32(proto::StatusOk));
    QCOMPARE(page.rows.size(), 2);
    QCOMPARE(page.rows.at(0).command, QLatin1String(cmd::RemoveObject));
    QCOMPARE(page.rows.at(1).command, QLatin1String(cmd::AddObject));
    for (const AuditRecord &row : page.rows) {
        QCOMPARE(row.object, TYPE_ID(uid));
        QCOMPARE(row.objectName, QStringLiteral("Петров Пётр (petrov)"));
    }
}

void TestServerAudit::confirmerIsRecorded()
{
    QCOMPARE(
        m_clerk->request(cmd::SetConfirmer, ZRDataStream::pack(quint32(m_uids["guard"]))).status,
        qint32(proto::StatusOk));
    QCOMPARE(rename(*m_clerk, m_uids["target"], QStringLiteral("Подтверждено")).status,
             qint32(proto::StatusOk));
    // For that one request only.
    QCOMPARE(rename(*m_clerk, m_uids["target"], QStringLiteral("Без подтверждения")).status,
             qint32(proto::StatusOk));
    // Named and then taken back: the next change has none.
    QCOMPARE(
        m_clerk->request(cmd::SetConfirmer, ZRDataStream::pack(quint32(m_uids["guard"]))).status,
        qint32(proto::StatusOk));
    QCOMPARE(m_clerk->request(cmd::SetConfirmer, ZRDataStream::pack(quint32(0))).status,
             qint32(proto::StatusOk));
    QCOMPARE(rename(*m_clerk, m_uids["target"], QStringLiteral("Снова без")).status,
             qint32(proto::StatusOk));
    AuditFilter filter;
    filter.operatorLogin = QStringLiteral("clerk");
    const Page page = readPage(*m_auditor, filter, 3);
    QCOMPARE(page.status, qint32(proto::StatusOk));
    QCOMPARE(page.rows.at(2).confirmedBy, QStringLiteral("guard"));
    QCOMPARE(page.rows.at(1).confirmedBy, QString());
    QCOMPARE(page.rows.at(0).confirmedBy, QString());
    QCOMPARE(
        select(*m_root, "SELECT confirmed_by FROM audit_log WHERE confirmed_by <> ''").rowCount, 1);
}

void TestServerAudit::confirmerMustBeAbleToConfirm_data()
{
    QTest::addColumn<QByteArray>("confirmer");
    QTest::addColumn<int>("status");
    QTest::addRow("himself") << QByteArray("clerk") << int(proto::StatusConflict);
    QTest::addRow("without a confirming role")
        << QByteArray("viewer") << int(proto::StatusForbidden);
    QTest::addRow("blocked") << QByteArray("blockedguard") << int(proto::StatusForbidden);
    QTest::addRow("unknown") << QByteArray("nobody") << int(proto::StatusNotFound);
}

void TestServerAudit::confirmerMustBeAbleToConfirm()
{
    QFETCH(QByteArray, confirmer);
    QFETCH(int, status);
    const TYPE_ID uid = m_uids.value(confirmer, 99999);
    const Command answer = m_clerk->request(cmd::SetConfirmer, ZRDataStream::pack(quint32(uid)));
    QCOMPARE(answer.status, qint32(status));
    QVERIFY(!answer.errorText().isEmpty());
    // Nobody is recorded for the change that follows.
    QCOMPARE(rename(*m_clerk, m_uids["target"], QStringLiteral("После отказа")).status,
             qint32(proto::StatusOk));
    AuditFilter filter;
    filter.operatorLogin = QStringLiteral("clerk");
    QCOMPARE(readPage(*m_auditor, filter, 1).rows.value(0).confirmedBy, QString());
}

void TestServerAudit::olderDatabaseGetsRoleAndColumns()
{
    const int rowsBefore = expectedIds("true").size();
    m_root.reset();
    m_auditor.reset();
    m_clerk.reset();
    m_server.engine.reset();
    {
        // The file as a server before the log screen left it: schema 1, no role, no columns.
        QSqlDatabase db = sideDatabase(m_server.databasePath, "old");
        QVERIFY(db.open());
        QSqlQuery query(db);
        for (const char *statement :
             {"DELETE FROM role_template_roles WHERE role = 'RL_AUDIT_SHOW'",
              "DELETE FROM roles WHERE name = 'RL_AUDIT_SHOW'", "DROP INDEX audit_log_by_operator",
              "DROP INDEX audit_log_by_command", "DROP INDEX audit_log_by_object",
              "ALTER TABLE audit_log DROP COLUMN object_name",
              "ALTER TABLE audit_log DROP COLUMN confirmed_by",
              "ALTER TABLE audit_log DROP COLUMN object_name_folded",
              onPostgres() ? "UPDATE schema_version SET version = 1" : "PRAGMA user_version = 1"})
            QVERIFY2(query.exec(QLatin1String(statement)), statement);
    }
    QSqlDatabase::removeDatabase(QStringLiteral("old"));
    QCOMPARE(m_server.start(), QString());
    m_root = m_server.rootClient();
    const DbResult holders = select(*m_root, templatesHolding(QStringLiteral("RL_AUDIT_SHOW")));
    QCOMPARE(holders.value(0, 0).toString(),
             QStringLiteral("RT_ADMINISTRATOR,RT_AUDITOR,RT_SUPERVISOR"));
    QList<zeral::RoleEntry> catalogue;
    ZRDataStream in(m_root->request(cmd::RoleCatalogue).data);
    zeral::wire::readList(in, catalogue);
    const int at
        = catalogue.indexOf({"RL_AUDIT_SHOW", "Просмотр журнала действий", "reports", false});
    QVERIFY(at > 0);
    QCOMPARE(catalogue.at(at - 1).key, QStringLiteral("RL_SYSTEM_LOG_SHOW"));

    // The old rows are all there, now without names, and the auditor reads them again.
    auto auditor = m_server.client();
    QCOMPARE(auditor->login("auditor", "Passw0rd").status, qint32(proto::StatusOk));
    QVERIFY(auditor->roles.contains(QStringLiteral("RL_AUDIT_SHOW")));
    const Page all = readPage(*auditor, {});
    QCOMPARE(all.status, qint32(proto::StatusOk));
    QVERIFY(all.rows.size() >= rowsBefore);
    QCOMPARE(all.rows.constLast().objectName, QString());
    QCOMPARE(
        select(*m_root, onPostgres()
                            ? "SELECT count(*) FROM pg_indexes WHERE indexname LIKE 'audit_log_by%'"
                            : "SELECT count(*) FROM sqlite_master WHERE name LIKE 'audit_log_by%'")
            .value(0, 0)
            .toInt(),
        3);
}

QTEST_GUILESS_MAIN(TestServerAudit)
#include "tst_serveraudit.moc"
