#pragma once

#include <shared/types.h>

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QStringList>

struct Command;
class ZRServerInterface;

namespace zeral {

class LocalStorage;

// Fills the local store after login or a reconnect: the catalogue of roles, then every
// dataset page by page. Each page is applied as it comes; a page never overwrites what a
// push told meanwhile; at the end of a dataset, objects the server no longer has are
// removed.
class LocalStorageLoader : public QObject
{
    Q_OBJECT
public:
    LocalStorageLoader(ZRServerInterface *server, LocalStorage *storage, QObject *parent = nullptr);
    ~LocalStorageLoader() override;

    void start();
    // Forgets the load in progress: its pages no longer reach the store.
    void stop();
    bool isRunning() const { return m_running; }

signals:
    // `step` of `steps` done; `dataname` is the dataset now being read.
    void progress(int step, int steps, const QString &dataname);
    void finished();
    void failed(const QString &reason);

private:
    void onPush(const Command &command);
    void requestRoleCatalogue();
    void startDataset(int index);
    void requestPage();
    void onRoleCatalogue(Command &answer);
    void onPage(Command &answer);
    void finishDataset();
    void fail(const QString &reason);

    QPointer<ZRServerInterface> m_server; // the studio may tear its router down first
    LocalStorage *m_storage;
    QStringList m_datanames;
    int m_current = -1;
    TYPE_ID m_afterUid = 0;
    // Of the dataset being read: the uids the server has now, by page or by push, and the
    // uids a push changed or removed during the load, which later pages leave alone.
    QSet<TYPE_ID> m_alive;
    QSet<TYPE_ID> m_pushed;
    bool m_running = false;
};

} // namespace zeral
