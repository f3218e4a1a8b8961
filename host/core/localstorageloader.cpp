#include "localstorageloader.h"

#include <host/core/authdata.h>
#include <host/core/command.h>
#include <host/core/localstorage.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <shared/datasets.h>
#include <shared/roleentry.h>
#include <shared/wire.h>

#include <QCoreApplication>

namespace zeral {

LocalStorageLoader::LocalStorageLoader(ZRServerInterface *server, LocalStorage *storage,
                                       QObject *parent)
    : QObject(parent)
    , m_server(server)
    , m_storage(storage)
{
    for (const char *dataname : ALL_DATANAMES) {
        Dataset dataset;
        dataset.dataname = QLatin1String(dataname);
        m_datasets.append(dataset);
    }

    connect(m_server, &ZRServerInterface::pushReceived, this, &LocalStorageLoader::onPush);
}

LocalStorageLoader::~LocalStorageLoader()
{
    if (m_server)
        m_server->cancelCallbacks(this);
}

void LocalStorageLoader::stop()
{
    if (m_server)
        m_server->cancelCallbacks(this);
    m_running = false;
}

void LocalStorageLoader::start()
{
    m_server->cancelCallbacks(this);
    m_running = true;
    for (Dataset &dataset : m_datasets) {
        dataset.afterUid = 0;
        dataset.alive.clear();
        dataset.pushed.clear();
        dataset.reading = false;
        dataset.done = false;
    }
    m_reported = -1;
    m_reader.clear();
    emit progress(0, m_datasets.size() + 1, QString());
    requestRoleCatalogue();
}

void LocalStorageLoader::onPush(const Command &command)
{
    // The store applies every push itself. For a dataset being read, a push is newer than any
    // page that comes after it, even one asked for before the push: such a page must not bring
    // back an older state of those objects, and the objects the push changed exist whatever
    // the pages say. A dataset not asked for yet will be read after the push anyway.
    LocalStorage::Push push;
    if (!m_running || !LocalStorage::readPush(command, &push))
        return;
    for (Dataset &dataset : m_datasets) {
        if (dataset.dataname != push.dataname)
            continue;
        if (!dataset.reading)
            return;
        for (const ObjectInfo &object : qAsConst(push.changed)) {
            dataset.pushed.insert(object.uid);
            dataset.alive.insert(object.uid);
        }
        for (TYPE_ID uid : qAsConst(push.removed)) {
            dataset.pushed.insert(uid);
            dataset.alive.remove(uid);
        }
        return;
    }
}

void LocalStorageLoader::requestRoleCatalogue()
{
    const Command command
        = Command::named(QLatin1String(proto::command::RoleCatalogue), AuthData::sessionId());
    m_server->send(
        command, [this](Command &answer) { onRoleCatalogue(answer); }, this);
}

void LocalStorageLoader::onRoleCatalogue(Command &answer)
{
    if (!answer.isOk()) {
        fail(answer.errorText());
        return;
    }
    ZRDataStream in(answer.data);
    QList<RoleEntry> entries;
    wire::readList(in, entries);
    if (in.status() != QDataStream::Ok) {
        fail(QCoreApplication::translate("LocalStorageLoader",
                                         "Сервер прислал нечитаемый каталог ролей"));
        return;
    }
    m_storage->setRoleCatalogue(entries);
    // Every dataset's first page at once: the server reads one while the studio stores
    // another.
    for (int index = 0; index < m_datasets.size(); ++index) {
        m_datasets[index].reading = true;
        requestPage(index);
    }
    reportProgress();
}

void LocalStorageLoader::requestPage(int index)
{
    const Dataset &dataset = m_datasets.at(index);
    Command command
        = Command::named(QLatin1String(proto::command::Snapshot), AuthData::sessionId());
    command.data = ZRDataStream::pack(dataset.dataname, dataset.afterUid, proto::SnapshotPageSize);
    m_server->send(
        command, [this, index](Command &answer) { onPage(index, answer); }, this);
}

void LocalStorageLoader::onPage(int index, Command &answer)
{
    if (!answer.isOk()) {
        fail(answer.errorText());
        return;
    }
    Dataset &dataset = m_datasets[index];
    ZRDataStream in(answer.data);
    QList<ObjectInfo> objects;
    bool more = false;
    m_reader.read(in, objects);
    in >> more;
    if (in.status() != QDataStream::Ok) {
        fail(QCoreApplication::translate("LocalStorageLoader",
                                         "Сервер прислал нечитаемые данные набора «%1»")
                 .arg(dataset.dataname));
        return;
    }
    const bool last = !more || objects.isEmpty();
    for (const ObjectInfo &object : qAsConst(objects))
        dataset.afterUid = qMax(dataset.afterUid, object.uid);
    // The next page is asked for before this one is stored, so the server reads it meanwhile.
    // A push that comes before it is still seen by it, as pages are stored as they come.
    if (!last)
        requestPage(index);
    for (auto it = objects.begin(); it != objects.end();) {
        if (dataset.pushed.contains(it->uid)) {
            it = objects.erase(it);
            continue;
        }
        dataset.alive.insert(it->uid);
        ++it;
    }
    m_storage->applyChanged(dataset.dataname, std::move(objects));
    if (last)
        finishDataset(index);
}

void LocalStorageLoader::finishDataset(int index)
{
    Dataset &dataset = m_datasets[index];
    QList<TYPE_ID> gone;
    const LocalStorage::Objects &objects = m_storage->constObjects(dataset.dataname);
    for (auto it = objects.cbegin(); it != objects.cend(); ++it) {
        if (!dataset.alive.contains(it.key()))
            gone.append(it.key());
    }
    m_storage->applyRemoved(dataset.dataname, gone);
    qCDebug(lcHostStore) << "loaded" << dataset.dataname << objects.size() << "objects";
    dataset.reading = false;
    dataset.done = true;
    dataset.alive = {};
    dataset.pushed = {};
    reportProgress();
}

void LocalStorageLoader::reportProgress()
{
    // Told in the fixed order whatever order the datasets end in: each step once, the first
    // dataset not read to its end named, then the end.
    const int steps = m_datasets.size() + 1;
    while (m_running) {
        const int next = m_reported + 1;
        if (next > 0 && next <= m_datasets.size() && !m_datasets.at(next - 1).done)
            return;
        m_reported = next;
        emit progress(next + 1, steps,
                      next < m_datasets.size() ? m_datasets.at(next).dataname : QString());
        if (next == m_datasets.size()) {
            m_running = false;
            m_reader.clear();
            emit finished();
            return;
        }
    }
}

void LocalStorageLoader::fail(const QString &reason)
{
    qCWarning(lcHostStore) << "loading the store failed:" << reason;
    // The other datasets' pages still on their way are not wanted any more.
    if (m_server)
        m_server->cancelCallbacks(this);
    m_running = false;
    m_reader.clear();
    emit failed(reason.isEmpty() ? QCoreApplication::translate("LocalStorageLoader",
                                                               "Не удалось загрузить данные")
                                 : reason);
}

} // namespace zeral
