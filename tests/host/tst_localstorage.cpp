#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/core/localstorageloader.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <shared/datasets.h>
#include <shared/roleentry.h>
#include <tests/support/builders.h>
#include <tests/support/scriptedserver.h>

#include <QtTest>

#include <functional>

using zeral::LocalStorage;
using zeral::LocalStorageLoader;
using zeral::ObjectInfo;
using zeral::TYPE_ID;
using Uids = QList<TYPE_ID>;
namespace cmd = zeral::proto::command;

namespace {

const QString User = QStringLiteral("user");

// Departments with these uids, all named `name`.
QList<ObjectInfo> objects(const Uids &uids, const QString &name)
{
    QList<ObjectInfo> result;
    for (TYPE_ID uid : uids)
        result.append(testing::makeObject(uid, QStringLiteral("OT_DEPARTMENT"),
                                          {{QStringLiteral("PT_NAME"), name}}));
    return result;
}

// The stored dataset as "uid:name ...", by ascending uid.
QString dump(const QString &dataname)
{
    const LocalStorage::Objects &stored = LocalStorage::instance()->constObjects(dataname);
    Uids uids = stored.keys();
    std::sort(uids.begin(), uids.end());
    QStringList parts;
    for (TYPE_ID uid : uids)
        parts << QStringLiteral("%1:%2").arg(uid).arg(
            stored.constValue(uid).parameters.value(QStringLiteral("PT_NAME")));
    return parts.join(QLatin1Char(' '));
}

// The server's side of a load: one role, the datasets served two objects a page. Every request
// is logged as "dataset>cursor" (the catalogue's as its command name) and its answer passes
// `intercept`, which may replace it.
struct SnapshotSource
{
    QHash<QString, QList<ObjectInfo>> datasets; // by ascending uid
    QStringList asked;
    std::function<void(const QString &request, Command *answer)> intercept;

    explicit SnapshotSource(ScriptedServer *server)
    {
        server->script(cmd::RoleCatalogue, [this](const Command &request) {
            const QList<zeral::RoleEntry> roles = {{"RL_USER_SHOW", "Просмотр", {}, false}};
            return reply(request.name + ">0", Command::answer(request, zeral::proto::StatusOk,
                                                              ZRDataStream::pack(roles)));
        });
        server->script(cmd::Snapshot, [this](const Command &request) {
            ZRDataStream in(request.data);
            QString dataname;
            quint32 afterUid = 0;
            qint32 limit = 0;
            in >> dataname >> afterUid >> limit;
            if (limit <= 0 || limit > zeral::proto::SnapshotPageSize)
                return Command::failure(request, zeral::proto::StatusMalformed, "bad limit");
            QList<ObjectInfo> found;
            bool more = false;
            for (const ObjectInfo &object : datasets.value(dataname)) {
                if (object.uid <= afterUid)
                    continue;
                if ((more = found.size() == 2))
                    break;
                found.append(object);
            }
            return reply(
                QStringLiteral("%1>%2").arg(dataname).arg(afterUid),
                Command::answer(request, zeral::proto::StatusOk, ZRDataStream::pack(found, more)));
        });
    }

    Command reply(const QString &request, Command answer)
    {
        asked.append(request);
        if (intercept)
            intercept(request, &answer);
        return answer;
    }
};

} // namespace

class TestLocalStorage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void pushes_data();
    void pushes();
    void loader();
    void loaderFails_data();
    void loaderFails();
    void loaderReadsOneDataset_data();
    void loaderReadsOneDataset();
    void loaderStops_data();
    void loaderStops();
};

void TestLocalStorage::init()
{
    LocalStorage::instance()->clear();
    AuthData::set({QStringLiteral("root"), 1, QByteArrayLiteral("load-session"), {}, {}, {}});
}

void TestLocalStorage::pushes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("users");  // afterwards; unchanged: the push is ignored
    QTest::addColumn<QString>("signal"); // what the store told, "" for nothing

    const QList<ObjectInfo> pushed = objects({2, 4}, "new");
    const QString unchanged = QStringLiteral("1:old 2:old 3:old");
    QTest::addRow("changed") << cmd::DataChanged << ZRDataStream::pack(User, pushed)
                             << "1:old 2:new 3:old 4:new"
                             << "changed user 2 4";
    QTest::addRow("removed, one unknown")
        << cmd::DataRemoved << ZRDataStream::pack(User, Uids{77, 3}) << "1:old 2:old"
        << "removed user 3";
    QTest::addRow("list shorter than its count")
        << cmd::DataChanged << ZRDataStream::pack(User, quint32(2), pushed.constFirst())
        << unchanged << "";
    QTest::addRow("bytes after the uids")
        << cmd::DataRemoved << ZRDataStream::pack(User, Uids{1}, QStringLiteral("tail"))
        << unchanged << "";
    QTest::addRow("unknown dataset")
        << cmd::DataChanged << ZRDataStream::pack(QStringLiteral("users"), pushed) << unchanged
        << "";
    QTest::addRow("another push") << cmd::SessionClosed << ZRDataStream::pack(QStringLiteral("bye"))
                                  << unchanged << "";
}

void TestLocalStorage::pushes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, payload);
    QFETCH(QString, users);
    QFETCH(QString, signal);
    LocalStorage *storage = LocalStorage::instance();
    storage->applyChanged(User, objects({1, 2, 3}, "old"));
    ScriptedServer server;
    storage->attach(&server);
    QSignalSpy changed(storage, &LocalStorage::dataChanged);
    QSignalSpy removed(storage, &LocalStorage::dataRemoved);

    server.push(name, payload);
    QCOMPARE(dump(User), users);
    QStringList told;
    for (const auto &[spy, what] :
         {std::pair{&changed, "changed"}, std::pair{&removed, "removed"}}) {
        for (const QList<QVariant> &emitted : qAsConst(*spy)) {
            Uids uids = emitted.at(1).value<Uids>();
            std::sort(uids.begin(), uids.end());
            QStringList parts{QLatin1String(what), emitted.at(0).toString()};
            for (TYPE_ID uid : qAsConst(uids))
                parts << QString::number(uid);
            told << parts.join(QLatin1Char(' '));
        }
    }
    QCOMPARE(told.join(QLatin1String("; ")), signal);
}

void TestLocalStorage::loader()
{
    LocalStorage *storage = LocalStorage::instance();
    storage->applyChanged(User, objects({10, 999}, "old"));
    storage->applyChanged(QStringLiteral("job"), objects({5}, "old"));
    ScriptedServer server;
    storage->attach(&server);
    SnapshotSource source(&server);
    source.datasets.insert(User, objects({10, 20, 30, 40, 50}, "snap"));
    source.datasets.insert(QStringLiteral("orgstructure"), objects({3, 8}, "o"));
    // While the second page of "user" is on its way, 40 changes, 1000 is created and 50 is
    // removed; that page and the next were read before and still show the old state.
    source.intercept = [&](const QString &request, Command *) {
        if (request == QLatin1String("user>20")) {
            server.push(cmd::DataChanged, ZRDataStream::pack(User, objects({40, 1000}, "push")));
            server.push(cmd::DataRemoved, ZRDataStream::pack(User, Uids{50}));
        }
    };
    LocalStorageLoader loader(&server, storage);
    QSignalSpy progress(&loader, &LocalStorageLoader::progress);
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    QString userWhenDone;
    connect(&loader, &LocalStorageLoader::progress, [&](int step) {
        if (step == 2) // "user" read to its end
            userWhenDone = dump(User);
    });
    loader.start();
    QVERIFY(finished.wait(5000));

    // The roles, then every dataset's first page at once; a dataset's next page goes on after
    // the last uid read, as soon as a page comes, until one says there is no more.
    QCOMPARE(source.asked.join(' '),
             QLatin1String(cmd::RoleCatalogue)
                 + ">0 user>0 subject>0 orgstructure>0 report>0 placing>0 "
                   "monitoring_settings>0 policy>0 db>0 job>0 user>20 user>40");
    QCOMPARE(server.sent().size(), source.asked.size());
    for (const Command &request : server.sent())
        QCOMPARE(request.sessionId, QByteArrayLiteral("load-session"));
    QCOMPARE(storage->roleTitle(QStringLiteral("RL_USER_SHOW")), QStringLiteral("Просмотр"));

    const QString users = QStringLiteral("10:snap 20:snap 30:snap 40:push 1000:push");
    QCOMPARE(dump(User), users);
    QCOMPARE(userWhenDone, users); // 999 went as soon as "user" was read
    QCOMPARE(dump(QStringLiteral("orgstructure")), QStringLiteral("3:o 8:o"));
    QVERIFY(storage->constObjects(QStringLiteral("job")).isEmpty());

    // Every step once and in order, naming the datasets in their fixed order, whatever order
    // they end in.
    const int steps = int(zeral::ALL_DATANAMES.size()) + 1;
    QCOMPARE(progress.count(), steps + 1);
    for (int step = 0; step <= steps; ++step) {
        const QString dataname = step == 0 || step == steps
                                     ? QString()
                                     : QLatin1String(zeral::ALL_DATANAMES.at(size_t(step - 1)));
        QCOMPARE(progress.at(step), (QVariantList{step, steps, dataname}));
    }
}

void TestLocalStorage::loaderFails_data()
{
    QTest::addColumn<QString>("request"); // the one answered badly
    QTest::addColumn<qint32>("status");   // 0: an answer that can't be read
    QTest::addColumn<QString>("reason");
    QTest::addRow("catalogue refused")
        << QLatin1String(cmd::RoleCatalogue) + ">0" << qint32(zeral::proto::StatusForbidden)
        << QStringLiteral("Нет прав на чтение ролей");
    QTest::addRow("later page refused")
        << "user>20" << qint32(zeral::proto::StatusInternal) << QStringLiteral("Сбой базы данных");
    QTest::addRow("no reason given")
        << "job>0" << qint32(zeral::proto::StatusInternal) << QString();
    QTest::addRow("unreadable page") << "policy>0" << 0 << QString();
}

void TestLocalStorage::loaderFails()
{
    QFETCH(QString, request);
    QFETCH(qint32, status);
    QFETCH(QString, reason);
    ScriptedServer server;
    SnapshotSource source(&server);
    source.datasets.insert(User, objects({10, 20, 30, 40, 50}, "u"));
    source.intercept = [&](const QString &asked, Command *answer) {
        if (asked == request)
            *answer = status == 0 ? Command::answer(*answer, zeral::proto::StatusOk, "\x01\x02")
                                  : Command::failure(*answer, status, reason);
    };
    LocalStorageLoader loader(&server, LocalStorage::instance());
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    QSignalSpy failed(&loader, &LocalStorageLoader::failed);
    int sentWhenFailed = -1;
    connect(&loader, &LocalStorageLoader::failed, [&] { sentWhenFailed = server.sent().size(); });
    loader.start();
    QVERIFY(failed.wait(5000));
    // The other datasets' pages still on their way come after the failure and are dropped.
    QTRY_COMPARE(source.asked.size(), server.sent().size());

    QCOMPARE(failed.count(), 1);
    QCOMPARE(finished.count(), 0);
    QVERIFY(!loader.isRunning());
    const QString told = failed.at(0).at(0).toString();
    QVERIFY2(reason.isEmpty() ? !told.isEmpty() : told == reason, qPrintable(told));
    QVERIFY(source.asked.contains(request));
    QCOMPARE(server.sent().size(), sentWhenFailed); // nothing is asked after it
    QCOMPARE(server.pendingCount(), 0);
}

void TestLocalStorage::loaderReadsOneDataset_data()
{
    QTest::addColumn<Uids>("served");    // "user" on the server, two a page
    QTest::addColumn<QString>("pushAt"); // the request whose answer a push overtakes
    QTest::addColumn<Uids>("changed");   // by the push, named "push"
    QTest::addColumn<Uids>("removed");   // by the push
    QTest::addColumn<QString>("asked");  // for "user"
    QTest::addColumn<QString>("users");  // afterwards

    QTest::addRow("empty") << Uids{} << QString() << Uids{} << Uids{} << "user>0"
                           << "";
    QTest::addRow("exactly one page") << Uids{10, 20} << QString() << Uids{} << Uids{} << "user>0"
                                      << "10:snap 20:snap";
    QTest::addRow("empty, a push before its only page")
        << Uids{} << "user>0" << Uids{7} << Uids{} << "user>0"
        << "7:push";
    QTest::addRow("one page, a push before it")
        << Uids{10, 20} << "user>0" << Uids{20, 30} << Uids{10} << "user>0"
        << "20:push 30:push";
    QTest::addRow("a push before the first of three pages")
        << Uids{10, 20, 30, 40, 50} << "user>0" << Uids{30} << Uids{50} << "user>0 user>20 user>40"
        << "10:snap 20:snap 30:push 40:snap";
    QTest::addRow("a push before the last page")
        << Uids{10, 20, 30, 40, 50} << "user>40" << Uids{20, 50} << Uids{40}
        << "user>0 user>20 user>40"
        << "10:snap 20:push 30:snap 50:push";
    QTest::addRow("a push removes what the last page shows")
        << Uids{10, 20, 30} << "user>20" << Uids{} << Uids{30} << "user>0 user>20"
        << "10:snap 20:snap";
}

void TestLocalStorage::loaderReadsOneDataset()
{
    QFETCH(Uids, served);
    QFETCH(QString, pushAt);
    QFETCH(Uids, changed);
    QFETCH(Uids, removed);
    QFETCH(QString, asked);
    QFETCH(QString, users);
    LocalStorage *storage = LocalStorage::instance();
    storage->applyChanged(User, objects({10, 999}, "old")); // 999 is no longer on the server
    ScriptedServer server;
    storage->attach(&server);
    SnapshotSource source(&server);
    source.datasets.insert(User, objects(served, "snap"));
    source.intercept = [&](const QString &request, Command *) {
        if (request != pushAt)
            return;
        if (!changed.isEmpty())
            server.push(cmd::DataChanged, ZRDataStream::pack(User, objects(changed, "push")));
        if (!removed.isEmpty())
            server.push(cmd::DataRemoved, ZRDataStream::pack(User, removed));
    };
    LocalStorageLoader loader(&server, storage);
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    loader.start();
    QVERIFY(finished.wait(5000));

    QStringList userAsked;
    for (const QString &request : qAsConst(source.asked)) {
        if (request.startsWith(User + QLatin1Char('>')))
            userAsked << request;
    }
    QCOMPARE(userAsked.join(' '), asked);
    QCOMPARE(dump(User), users);
    QCOMPARE(server.pendingCount(), 0);
}

void TestLocalStorage::loaderStops_data()
{
    QTest::addColumn<QString>("request"); // the one on its way when the load is stopped

    QTest::addRow("catalogue") << QLatin1String(cmd::RoleCatalogue) + ">0";
    QTest::addRow("every first page") << "user>0";
    QTest::addRow("a later page") << "user>20";
    QTest::addRow("the last first page") << "job>0";
}

void TestLocalStorage::loaderStops()
{
    QFETCH(QString, request);
    LocalStorage *storage = LocalStorage::instance();
    ScriptedServer server;
    storage->attach(&server);
    SnapshotSource source(&server);
    source.datasets.insert(User, objects({10, 20, 30, 40, 50}, "u"));
    source.datasets.insert(QStringLiteral("job"), objects({5}, "j"));
    LocalStorageLoader loader(&server, storage);
    QSignalSpy progress(&loader, &LocalStorageLoader::progress);
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    QSignalSpy failed(&loader, &LocalStorageLoader::failed);
    QString storedWhenStopped;
    int sentWhenStopped = -1;
    int progressWhenStopped = -1;
    source.intercept = [&](const QString &asked, Command *) {
        if (asked != request)
            return;
        loader.stop(); // its answer is built and on its way, with the others sent before
        storedWhenStopped = dump(User) + QLatin1Char('|') + dump(QStringLiteral("job"));
        sentWhenStopped = server.sent().size();
        progressWhenStopped = progress.count();
    };
    loader.start();
    QTRY_VERIFY(sentWhenStopped >= 0);
    QTRY_COMPARE(source.asked.size(), server.sent().size());

    QVERIFY(!loader.isRunning());
    QCOMPARE(server.sent().size(), sentWhenStopped);
    QCOMPARE(server.pendingCount(), 0);
    QCOMPARE(dump(User) + QLatin1Char('|') + dump(QStringLiteral("job")), storedWhenStopped);
    QCOMPARE(finished.count(), 0);
    QCOMPARE(failed.count(), 0);
    QCOMPARE(progress.count(), progressWhenStopped);
}

QTEST_GUILESS_MAIN(TestLocalStorage)
#include "tst_localstorage.moc"
