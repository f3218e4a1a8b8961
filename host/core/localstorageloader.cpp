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
    for (const char *dataname : ALL_DATANAMES)
        m_datanames.append(QLatin1String(dataname));

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
    m_current = -1;
    emit progress(0, m_datanames.size() + 1, QString());
    requestRoleCatalogue();
}

void LocalStorageLoader::onPush(const Command &command)
{
    // The store applies every push itself. For the dataset being read, a push is newer than
    // any page that comes after it: such a page must not bring back an older state of those
    // objects, and the objects the push changed exist whatever the pages say.
    LocalStorage::Push push;
    if (!m_running || m_current < 0 || !LocalStorage::readPush(command, &push)
        || push.dataname != m_datanames.value(m_current))
        return;
    for (const ObjectInfo &object : qAsConst(push.changed)) {
        m_pushed.insert(object.uid);
        m_alive.insert(object.uid);
    }
    for (TYPE_ID uid : qAsConst(push.removed)) {
        m_pushed.insert(uid);
        m_alive.remove(uid);
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
    startDataset(0);
}

void LocalStorageLoader::startDataset(int index)
{
    m_current = index;
    m_afterUid = 0;
    m_alive.clear();
    m_pushed.clear();
    emit progress(index + 1, m_datanames.size() + 1, m_datanames.value(index));
    if (index < m_datanames.size()) {
        requestPage();
        return;
    }
    m_running = false;
    emit finished();
}

void LocalStorageLoader::requestPage()
{
    Command command
        = Command::named(QLatin1String(proto::command::Snapshot), AuthData::sessionId());
    command.data
        = ZRDataStream::pack(m_datanames.at(m_current), m_afterUid, proto::SnapshotPageSize);
    m_server->send(
        command, [this](Command &answer) { onPage(answer); }, this);
}

void LocalStorageLoader::onPage(Command &answer)
{
    if (!answer.isOk()) {
        fail(answer.errorText());
        return;
    }
    ZRDataStream in(answer.data);
    QList<ObjectInfo> objects;
    bool more = false;
    wire::readList(in, objects);
    in >> more;
    if (in.status() != QDataStream::Ok) {
        fail(QCoreApplication::translate("LocalStorageLoader",
                                         "Сервер прислал нечитаемые данные набора «%1»")
                 .arg(m_datanames.at(m_current)));
        return;
    }
    const bool emptyPage = objects.isEmpty();
    for (auto it = objects.begin(); it != objects.end();) {
        m_afterUid = qMax(m_afterUid, it->uid);
        if (m_pushed.contains(it->uid)) {
            it = objects.erase(it);
            continue;
        }
        m_alive.insert(it->uid);
        ++it;
    }
    m_storage->applyChanged(m_datanames.at(m_current), objects);
    if (more && !emptyPage)
        requestPage();
    else
        finishDataset();
}

void LocalStorageLoader::finishDataset()
{
    const QString dataname = m_datanames.at(m_current);
    QList<TYPE_ID> gone;
    const LocalStorage::Objects &objects = m_storage->constObjects(dataname);
    for (auto it = objects.cbegin(); it != objects.cend(); ++it) {
        if (!m_alive.contains(it.key()))
            gone.append(it.key());
    }
    m_storage->applyRemoved(dataname, gone);
    qCDebug(lcHostStore) << "loaded" << dataname << objects.size() << "objects";
    startDataset(m_current + 1);
}

void LocalStorageLoader::fail(const QString &reason)
{
    qCWarning(lcHostStore) << "loading the store failed:" << reason;
    m_running = false;
    m_current = -1;
    emit failed(reason.isEmpty() ? QCoreApplication::translate("LocalStorageLoader",
                                                               "Не удалось загрузить данные")
                                 : reason);
}

} // namespace zeral
