#include "sqlreaderpool.h"

#include <host/core/dbquery.h>
#include <server/engine/ops/sqlreader.h>

#include <QThread>

namespace zeral::server {

struct SqlReaderPool::Worker
{
    QThread thread;
    QObject context;                   // lives in `thread`: jobs are posted to it
    std::unique_ptr<SqlReader> reader; // made, used and destroyed in `thread`
    QAtomicInt stop;                   // set when the pool goes
    // Touched in the pool's thread only.
    bool busy = false;
    QByteArray sessionId;
    Done done;
};

SqlReaderPool::SqlReaderPool(const QString &databasePath, Limits limits, QObject *parent)
    : QObject(parent)
    , m_path(databasePath)
    , m_limits(limits)
{
    for (int i = 0; i < qMax(1, m_limits.workers); ++i) {
        auto worker = std::make_unique<Worker>();
        Worker *w = worker.get();
        w->thread.setObjectName(QStringLiteral("client SQL %1").arg(i + 1));
        w->context.moveToThread(&w->thread);
        // The connection belongs to the worker's thread and is closed there.
        connect(
            &w->thread, &QThread::finished, &w->context, [w] { w->reader.reset(); },
            Qt::DirectConnection);
        w->thread.start();
        m_workers.push_back(std::move(worker));
    }
}

SqlReaderPool::~SqlReaderPool()
{
    for (const auto &worker : m_workers) {
        worker->stop.storeRelaxed(1);
        worker->thread.quit();
    }
    for (const auto &worker : m_workers)
        worker->thread.wait();
}

SqlReaderPool::Admission SqlReaderPool::submit(const QByteArray &sessionId, const DbQuery &query,
                                               Done done)
{
    const auto ofSession
        = std::count_if(m_workers.cbegin(), m_workers.cend(), [&](const auto &worker) {
              return worker->busy && worker->sessionId == sessionId;
          });
    if (ofSession >= m_limits.perSession)
        return Admission::SessionBusy;
    const auto free = std::find_if(m_workers.cbegin(), m_workers.cend(),
                                   [](const auto &worker) { return !worker->busy; });
    if (free == m_workers.cend())
        return Admission::ServerBusy;
    Worker *w = free->get();
    w->busy = true;
    w->sessionId = sessionId;
    w->done = std::move(done);
    const QString path = m_path;
    const int timeLimitMs = m_limits.timeLimitMs;
    QMetaObject::invokeMethod(
        &w->context,
        [this, w, query, path, timeLimitMs] {
            if (!w->reader)
                w->reader = std::make_unique<SqlReader>(path, timeLimitMs, &w->stop);
            const Reply reply = w->reader->run(query);
            // Back in the pool's thread; dropped with the pool if it has gone meanwhile.
            QMetaObject::invokeMethod(
                this, [this, w, reply] { finish(w, reply); }, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    return Admission::Started;
}

void SqlReaderPool::finish(Worker *worker, const Reply &reply)
{
    const Done done = std::move(worker->done);
    worker->done = nullptr;
    worker->busy = false;
    worker->sessionId.clear();
    if (done)
        done(reply);
}

} // namespace zeral::server
