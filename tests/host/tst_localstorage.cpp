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

template<class... Values>
QByteArray write(const Values &...values)
{
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    (out << ... << values);
    return bytes;
}

// Departments with these uids, all with the name given.
QList<ObjectInfo> objects(const Uids &uids, const QString &name)
{
    QList<ObjectInfo> result;
    for (TYPE_ID uid : uids)
        result.append(testing::makeObject(uid, QStringLiteral("OT_DEPARTMENT"),
                                          {{QStringLiteral("PT_NAME"), name}}));
    return result;
}

QString nameOf(TYPE_ID uid, const QString &dataname)
{
    return LocalStorage::instance()->constObject(uid, dataname).parameters.value("PT_NAME");
}

Uids sortedUids(const QString &dataname)
{
    Uids uids = LocalStorage::instance()->constObjects(dataname).keys();
    std::sort(uids.begin(), uids.end());
    return uids;
}

// The server's side of loading the store: prepared datasets served two objects a page, every
// page request recorded. `intercept` sees each answer before it goes, and may replace it or
// act first; for the catalogue it gets the command name as the dataset.
struct SnapshotSource
{
    struct Page
    {
        QString dataname;
        quint32 afterUid = 0;
        qint32 limit = 0;
    };

    QHash<QString, QList<ObjectInfo>> datasets; // by ascending uid
    QList<zeral::RoleEntry> catalogue;
    QList<Page> requests;
    std::function<void(const Page &, Command *answer)> intercept;

    void install(ScriptedServer *server)
    {
        server->script(cmd::RoleCatalogue, [this](const Command &request) {
            Command answer = Command::answer(request, zeral::proto::StatusOk, write(catalogue));
            if (intercept)
                intercept({request.name, 0, 0}, &answer);
            return answer;
        });
        server->script(cmd::Snapshot, [this](const Command &request) {
            ZRDataStream in(request.data);
            Page page;
            in >> page.dataname >> page.afterUid >> page.limit;
            requests.append(page);
            QList<ObjectInfo> objects;
            bool more = false;
            for (const ObjectInfo &object : datasets.value(page.dataname)) {
                if (object.uid <= page.afterUid)
                    continue;
                more = objects.size() == qMin(2, int(page.limit));
                if (more)
                    break;
                objects.append(object);
            }
            Command answer = Command::answer(request, zeral::proto::StatusOk, write(objects, more));
            if (intercept)
                intercept(page, &answer);
            return answer;
        });
    }

    QList<quint32> cursors(const QString &dataname) const
    {
        QList<quint32> result;
        for (const Page &request : requests) {
            if (request.dataname == dataname)
                result.append(request.afterUid);
        }
        return result;
    }
};

} // namespace

class TestLocalStorage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void applyChanged_data();
    void applyChanged();
    void applyRemoved_data();
    void applyRemoved();
    void readers();
    void pushes_data();
    void pushes();
    void roleCatalogue();
    void loaderReadsEveryDataset();
    void loaderRemovesWhatTheSnapshotLacks();
    void loaderKeepsPushesDuringLoad();
    void loaderFails_data();
    void loaderFails();
};

void TestLocalStorage::init()
{
    LocalStorage::instance()->clear();
    AuthData::set({QStringLiteral("root"), 1, QByteArrayLiteral("load-session"), {}, {}, {}});
}

void TestLocalStorage::applyChanged_data()
{
    QTest::addColumn<QString>("dataname");
    QTest::addColumn<Uids>("uids");
    QTest::addRow("one object") << "user" << Uids{5};
    QTest::addRow("several, order kept") << "orgstructure" << Uids{30, 10, 20};
    QTest::addRow("replaces a stored object") << "db" << Uids{1};
    QTest::addRow("nothing") << "job" << Uids{};
}

void TestLocalStorage::applyChanged()
{
    QFETCH(QString, dataname);
    QFETCH(Uids, uids);
    LocalStorage *storage = LocalStorage::instance();
    storage->applyChanged(dataname, objects({1}, QStringLiteral("old")));
    storage->applyChanged(QStringLiteral("placing"), objects({5}, QStringLiteral("elsewhere")));

    QSignalSpy changed(storage, &LocalStorage::dataChanged);
    QSignalSpy removed(storage, &LocalStorage::dataRemoved);
    storage->applyChanged(dataname, objects(uids, QStringLiteral("new")));

    QCOMPARE(removed.count(), 0);
    QCOMPARE(changed.count(), uids.isEmpty() ? 0 : 1);
    if (uids.isEmpty())
        return;
    QCOMPARE(changed.at(0).at(0).toString(), dataname);
    QCOMPARE(changed.at(0).at(1).value<Uids>(), uids);
    for (TYPE_ID uid : uids)
        QCOMPARE(nameOf(uid, dataname), QStringLiteral("new"));
    QCOMPARE(nameOf(5, QStringLiteral("placing")), QStringLiteral("elsewhere"));
    QCOMPARE(storage->constObjects(dataname).size(), uids.size() + (uids.contains(1) ? 0 : 1));
}

void TestLocalStorage::applyRemoved_data()
{
    QTest::addColumn<QString>("dataname");
    QTest::addColumn<Uids>("remove");
    QTest::addColumn<Uids>("emitted");
    QTest::addColumn<Uids>("left"); // in "user", which holds 1, 2 and 3
    QTest::addRow("one") << "user" << Uids{2} << Uids{2} << Uids{1, 3};
    QTest::addRow("known and unknown") << "user" << Uids{3, 99, 1} << Uids{3, 1} << Uids{2};
    QTest::addRow("only unknown") << "user" << Uids{99} << Uids{} << Uids{1, 2, 3};
    QTest::addRow("empty dataset") << "job" << Uids{1} << Uids{} << Uids{1, 2, 3};
    QTest::addRow("unknown dataset") << "nope" << Uids{1} << Uids{} << Uids{1, 2, 3};
}

void TestLocalStorage::applyRemoved()
{
    QFETCH(QString, dataname);
    QFETCH(Uids, remove);
    QFETCH(Uids, emitted);
    QFETCH(Uids, left);
    LocalStorage *storage = LocalStorage::instance();
    storage->applyChanged(QStringLiteral("user"), objects({1, 2, 3}, QStringLiteral("u")));

    QSignalSpy removed(storage, &LocalStorage::dataRemoved);
    QSignalSpy changed(storage, &LocalStorage::dataChanged);
    storage->applyRemoved(dataname, remove);

    QCOMPARE(changed.count(), 0);
    QCOMPARE(removed.count(), emitted.isEmpty() ? 0 : 1);
    if (!emitted.isEmpty()) {
        QCOMPARE(removed.at(0).at(0).toString(), dataname);
        QCOMPARE(removed.at(0).at(1).value<Uids>(), emitted);
    }
    QCOMPARE(sortedUids(QStringLiteral("user")), left);
}

void TestLocalStorage::readers()
{
    LocalStorage *storage = LocalStorage::instance();
    QVERIFY(storage->dbSettings().type.isEmpty()); // no database object yet

    const ObjectInfo database
        = testing::makeDatabase(7, {{QStringLiteral("PT_PASSWORD_MIN_LENGTH"), "10"}});
    QList<ObjectInfo> db = objects({3, 9}, QStringLiteral("decoy"));
    db.insert(1, database);
    storage->applyChanged(QStringLiteral("db"), db);
    storage->applyChanged(QStringLiteral("user"), {testing::makeUser(7, QStringLiteral("u7"))});

    QVERIFY(storage->dbSettings() == database);
    QVERIFY(storage->constObject(7, QStringLiteral("db")) == database);
    QCOMPARE(storage->constObject(7, QStringLiteral("user")).type, QStringLiteral("OT_USER"));
    QCOMPARE(storage->constObjects(QStringLiteral("db")).size(), 3);
    QVERIFY(storage->constObjects(QStringLiteral("no such dataset")).isEmpty());
    QVERIFY(storage->constObject(404, QStringLiteral("db")) == ObjectInfo());
    QVERIFY(storage->constObject(7, QStringLiteral("no such dataset")) == ObjectInfo());
}

void TestLocalStorage::pushes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<Uids>("uids"); // as the signal tells them; none: the push is ignored

    const QString user = QStringLiteral("user");
    const QList<ObjectInfo> pushed = objects({2, 4}, QStringLiteral("pushed"));
    QTest::addRow("changed") << cmd::DataChanged << write(user, pushed) << Uids{2, 4};
    QTest::addRow("removed") << cmd::DataRemoved << write(user, Uids{1, 3}) << Uids{1, 3};
    QTest::addRow("removed, one unknown")
        << cmd::DataRemoved << write(user, Uids{77, 3}) << Uids{3};
    QTest::addRow("list shorter than its count")
        << cmd::DataChanged << write(user, quint32(2), pushed.constFirst()) << Uids{};
    QTest::addRow("empty payload") << cmd::DataRemoved << QByteArray() << Uids{};
    QTest::addRow("bytes after the uids")
        << cmd::DataRemoved << write(user, Uids{1}, QStringLiteral("tail")) << Uids{};
    QTest::addRow("unknown dataset, changed")
        << cmd::DataChanged << write(QStringLiteral("users"), pushed) << Uids{};
    QTest::addRow("unknown dataset, removed")
        << cmd::DataRemoved << write(QStringLiteral("nope"), Uids{1}) << Uids{};
    QTest::addRow("another push") << cmd::SessionClosed << write(QStringLiteral("bye")) << Uids{};
}

void TestLocalStorage::pushes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, payload);
    QFETCH(Uids, uids);
    LocalStorage *storage = LocalStorage::instance();
    storage->applyChanged(QStringLiteral("user"), objects({1, 2, 3}, QStringLiteral("old")));
    storage->applyChanged(QStringLiteral("db"), objects({1}, QStringLiteral("db")));
    const LocalStorage::Objects users = storage->constObjects(QStringLiteral("user"));
    const LocalStorage::Objects db = storage->constObjects(QStringLiteral("db"));

    ScriptedServer server;
    storage->attach(&server);
    QSignalSpy changed(storage, &LocalStorage::dataChanged);
    QSignalSpy removed(storage, &LocalStorage::dataRemoved);
    server.push(name, payload);

    QVERIFY(storage->constObjects(QStringLiteral("db")) == db);
    if (uids.isEmpty()) {
        QCOMPARE(changed.count() + removed.count(), 0);
        QVERIFY(storage->constObjects(QStringLiteral("user")) == users);
        return;
    }
    const bool isChange = name == QLatin1String(cmd::DataChanged);
    QSignalSpy &spy = isChange ? changed : removed;
    QCOMPARE(changed.count() + removed.count(), 1);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("user"));
    QCOMPARE(spy.at(0).at(1).value<Uids>(), uids);
    for (TYPE_ID uid : uids) {
        if (isChange)
            QCOMPARE(nameOf(uid, QStringLiteral("user")), QStringLiteral("pushed"));
        else
            QVERIFY(!storage->constObjects(QStringLiteral("user")).contains(uid));
    }
}

void TestLocalStorage::roleCatalogue()
{
    LocalStorage *storage = LocalStorage::instance();
    const QList<zeral::RoleEntry> first
        = {{"users", "Пользователи", {}, true}, {"RL_USER_SHOW", "Просмотр", "users", false}};
    QSignalSpy changed(storage, &LocalStorage::roleCatalogueChanged);
    storage->setRoleCatalogue(first);
    QCOMPARE(changed.count(), 1);
    QVERIFY(storage->roleCatalogue() == first);
    QCOMPARE(storage->roleTitle(QStringLiteral("RL_USER_SHOW")), QStringLiteral("Просмотр"));
    QCOMPARE(storage->roleTitle(QStringLiteral("users")), QStringLiteral("Пользователи"));
    QCOMPARE(storage->roleTitle(QStringLiteral("RL_UNKNOWN")), QStringLiteral("RL_UNKNOWN"));

    storage->setRoleCatalogue({{"RL_USER_BLOCK", "Блокировка", "users", false}});
    QCOMPARE(changed.count(), 2);
    QCOMPARE(storage->roleTitle(QStringLiteral("RL_USER_SHOW")), QStringLiteral("RL_USER_SHOW"));
    QCOMPARE(storage->roleTitle(QStringLiteral("RL_USER_BLOCK")), QStringLiteral("Блокировка"));
}

void TestLocalStorage::loaderReadsEveryDataset()
{
    ScriptedServer server;
    SnapshotSource source;
    source.datasets.insert(QStringLiteral("user"), objects({10, 20, 35, 40, 51}, "u"));
    source.datasets.insert(QStringLiteral("orgstructure"), objects({3, 8}, "o"));
    source.datasets.insert(QStringLiteral("job"), objects({1000}, "j"));
    source.catalogue = {{"RL_USER_SHOW", "Просмотр", {}, false}};
    source.install(&server);
    LocalStorage *storage = LocalStorage::instance();
    storage->setRoleCatalogue({});
    LocalStorageLoader loader(&server, storage);
    QSignalSpy progress(&loader, &LocalStorageLoader::progress);
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    QSignalSpy failed(&loader, &LocalStorageLoader::failed);

    loader.start();
    QVERIFY(finished.wait(5000));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(failed.count(), 0);
    QVERIFY(!loader.isRunning());

    QCOMPARE(server.sent().constFirst().name, QLatin1String(cmd::RoleCatalogue));
    for (const Command &request : server.sent())
        QCOMPARE(request.sessionId, QByteArrayLiteral("load-session"));
    QCOMPARE(storage->roleTitle(QStringLiteral("RL_USER_SHOW")), QStringLiteral("Просмотр"));

    QCOMPARE(source.cursors(QStringLiteral("user")), (QList<quint32>{0, 20, 40}));
    QCOMPARE(source.cursors(QStringLiteral("orgstructure")), QList<quint32>{0});
    int pages = 0;
    QSet<QString> announced;
    for (const QVariantList &step : qAsConst(progress))
        announced.insert(step.at(2).toString());
    for (const char *name : zeral::ALL_DATANAMES) {
        const QString dataname = QLatin1String(name);
        QVERIFY2(!source.cursors(dataname).isEmpty(), name);
        QVERIFY2(announced.contains(dataname), name);
        pages += source.cursors(dataname).size();
        QCOMPARE(sortedUids(dataname).size(), source.datasets.value(dataname).size());
    }
    QCOMPARE(source.requests.size(), pages); // nothing else was asked for
    for (const SnapshotSource::Page &request : qAsConst(source.requests))
        QVERIFY(request.limit > 0 && request.limit <= zeral::proto::SnapshotPageSize);

    // From 0 to all steps done, never backwards, out of one number of steps.
    QCOMPARE(progress.constFirst().at(0).toInt(), 0);
    QCOMPARE(progress.constLast().at(0).toInt(), 10);
    for (int i = 0; i < progress.count(); ++i) {
        QCOMPARE(progress.at(i).at(1).toInt(), 10);
        QVERIFY(i == 0 || progress.at(i).at(0).toInt() >= progress.at(i - 1).at(0).toInt());
    }
}

void TestLocalStorage::loaderRemovesWhatTheSnapshotLacks()
{
    LocalStorage *storage = LocalStorage::instance();
    storage->applyChanged(QStringLiteral("user"), objects({10, 999}, QStringLiteral("old")));
    storage->applyChanged(QStringLiteral("job"), objects({5}, QStringLiteral("old")));

    ScriptedServer server;
    SnapshotSource source;
    source.datasets.insert(QStringLiteral("user"), objects({10, 20, 30}, QStringLiteral("new")));
    source.install(&server);
    // Which uids of "user" the store holds when each dataset is first asked for.
    QHash<QString, Uids> userAtStart;
    source.intercept = [&userAtStart](const SnapshotSource::Page &page, Command *) {
        if (page.afterUid == 0)
            userAtStart.insert(page.dataname, sortedUids(QStringLiteral("user")));
    };
    LocalStorageLoader loader(&server, storage);
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    loader.start();
    QVERIFY(finished.wait(5000));

    QCOMPARE(sortedUids(QStringLiteral("user")), (Uids{10, 20, 30}));
    QCOMPARE(nameOf(10, QStringLiteral("user")), QStringLiteral("new"));
    QVERIFY(storage->constObjects(QStringLiteral("job")).isEmpty());
    // 999 went when "user" was done, before the next dataset was asked for.
    QCOMPARE(userAtStart.value(QStringLiteral("user")), (Uids{10, 999}));
    QCOMPARE(userAtStart.value(QStringLiteral("subject")), (Uids{10, 20, 30}));
}

void TestLocalStorage::loaderKeepsPushesDuringLoad()
{
    LocalStorage *storage = LocalStorage::instance();
    ScriptedServer server;
    storage->attach(&server);
    SnapshotSource source;
    source.datasets.insert(QStringLiteral("user"),
                           objects({10, 20, 30, 40, 50}, QStringLiteral("snapshot")));
    // Between the first and the second page of "user": 30 changes, 1000 is created and 50 is
    // removed. The later pages were read before that and still show the old state.
    source.intercept = [&server](const SnapshotSource::Page &page, Command *) {
        if (page.dataname != QLatin1String("user") || page.afterUid != 20)
            return;
        const QString user = QStringLiteral("user");
        server.push(cmd::DataChanged, write(user, objects({30, 1000}, QStringLiteral("push"))));
        server.push(cmd::DataRemoved, write(user, Uids{50}));
    };
    source.install(&server);
    LocalStorageLoader loader(&server, storage);
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    loader.start();
    QVERIFY(finished.wait(5000));

    QCOMPARE(source.cursors(QStringLiteral("user")), (QList<quint32>{0, 20, 40}));
    QCOMPARE(sortedUids(QStringLiteral("user")), (Uids{10, 20, 30, 40, 1000}));
    QCOMPARE(nameOf(30, QStringLiteral("user")), QStringLiteral("push"));
    QCOMPARE(nameOf(1000, QStringLiteral("user")), QStringLiteral("push"));
    QCOMPARE(nameOf(40, QStringLiteral("user")), QStringLiteral("snapshot"));
}

void TestLocalStorage::loaderFails_data()
{
    QTest::addColumn<QString>("dataname"); // or the command name, for the catalogue
    QTest::addColumn<quint32>("afterUid");
    QTest::addColumn<qint32>("status"); // 0: an answer that can't be read
    QTest::addColumn<QString>("reason");
    QTest::addRow("catalogue refused")
        << cmd::RoleCatalogue << 0u << qint32(zeral::proto::StatusForbidden)
        << QStringLiteral("Нет прав на чтение ролей");
    QTest::addRow("later page refused") << "user" << 20u << qint32(zeral::proto::StatusInternal)
                                        << QStringLiteral("Сбой базы данных");
    QTest::addRow("no reason given")
        << "job" << 0u << qint32(zeral::proto::StatusInternal) << QString();
    QTest::addRow("unreadable page") << "policy" << 0u << 0 << QString();
}

void TestLocalStorage::loaderFails()
{
    QFETCH(QString, dataname);
    QFETCH(quint32, afterUid);
    QFETCH(qint32, status);
    QFETCH(QString, reason);

    ScriptedServer server;
    SnapshotSource source;
    source.datasets.insert(QStringLiteral("user"), objects({10, 20, 30, 40, 50}, "u"));
    source.intercept = [&](const SnapshotSource::Page &page, Command *answer) {
        if (page.dataname == dataname && page.afterUid == afterUid)
            *answer = status == 0 ? Command::answer(*answer, zeral::proto::StatusOk, "\x01\x02")
                                  : Command::failure(*answer, status, reason);
    };
    source.install(&server);
    LocalStorageLoader loader(&server, LocalStorage::instance());
    QSignalSpy finished(&loader, &LocalStorageLoader::finished);
    QSignalSpy failed(&loader, &LocalStorageLoader::failed);
    loader.start();
    QVERIFY(failed.wait(5000));

    QCOMPARE(failed.count(), 1);
    const QString told = failed.at(0).at(0).toString();
    QVERIFY(!told.isEmpty());
    if (!reason.isEmpty())
        QCOMPARE(told, reason);
    QCOMPARE(finished.count(), 0);
    QVERIFY(!loader.isRunning());
    // Nothing is asked after the failure.
    const Command last = server.sent().constLast();
    if (dataname != QLatin1String(cmd::RoleCatalogue)) {
        QCOMPARE(last.name, QLatin1String(cmd::Snapshot));
        QCOMPARE(source.requests.constLast().dataname, dataname);
        QCOMPARE(source.requests.constLast().afterUid, afterUid);
    } else {
        QCOMPARE(server.sent().size(), 1);
    }
}

QTEST_GUILESS_MAIN(TestLocalStorage)
#include "tst_localstorage.moc"
