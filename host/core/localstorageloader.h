#pragma once

#include <shared/objectlistreader.h>
#include <shared/types.h>

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QVector>

struct Command;
class ZRServerInterface;

namespace zeral {

class LocalStorage;

// Fills the local store after login or a reconnect: the catalogue of roles, then every
// dataset page by page. The datasets are read side by side, and each keeps the request for
// its next page on its way while it stores the last one, so that the server reads while the
// studio stores. Each page is applied as it comes; a page never overwrites what a push told
// meanwhile; at the end of a dataset, objects the server no longer has are removed.
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
    // `step` of `steps` done, in order: the catalogue, then the datasets in their fixed
    // order; `dataname` is the first dataset not yet read to its end.
    void progress(int step, int steps, const QString &dataname);
    void finished();
    void failed(const QString &reason);

private:
    // One dataset's load. `alive`: the uids the server has now, by page or by push; `pushed`:
    // the uids a push changed or removed during the load, which later pages leave alone.
    struct Dataset
    {
        QString dataname;
        TYPE_ID afterUid = 0;
        QSet<TYPE_ID> alive;
        QSet<TYPE_ID> pushed;
        bool reading = false; // its pages are being asked for
        bool done = false;
    };

    void onPush(const Command &command);
    void requestRoleCatalogue();
    void requestPage(int index);
    void onRoleCatalogue(Command &answer);
    void onPage(int index, Command &answer);
    void finishDataset(int index);
    void reportProgress();
    void fail(const QString &reason);

    QPointer<ZRServerInterface> m_server; // the studio may tear its router down first
    LocalStorage *m_storage;
    QVector<Dataset> m_datasets; // in the order progress tells them
    wire::ObjectListReader m_reader; // one for the whole load, so that its pool spans the pages
    int m_reported = -1;         // the last dataset progress named as being read
    bool m_running = false;
};

} // namespace zeral
