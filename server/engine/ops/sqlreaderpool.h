#pragma once

#include <server/engine/ops/reply.h>

#include <QByteArray>
#include <QObject>

#include <functional>
#include <memory>
#include <vector>

struct DbQuery;

namespace zeral::server {

// The worker threads that run the clients' statements (data.exec_sql), each with a SqlReader
// of its own, so that a long statement holds up neither the server's event loop nor the
// writes. There are as many statements in flight as workers, and at most `perSession` of one
// session; a statement over either limit is refused at once (nothing waits in a queue, so a
// refusal never comes late). The pool lives in the engine's thread and calls back there.
class SqlReaderPool : public QObject
{
    Q_OBJECT
public:
    struct Limits
    {
        int workers = 4;
        int perSession = 2;
        int timeLimitMs = 10000;
    };
    enum class Admission { Started, SessionBusy, ServerBusy };
    using Done = std::function<void(const Reply &)>;

    SqlReaderPool(const QString &databasePath, Limits limits, QObject *parent = nullptr);
    // Stops the running statements (their answers are dropped) and waits for the workers.
    ~SqlReaderPool() override;

    Limits limits() const { return m_limits; }
    // Starts `query` for the session if the limits allow; `done` is called later, in this
    // object's thread, with the answer, unless the pool goes first.
    Admission submit(const QByteArray &sessionId, const DbQuery &query, Done done);

private:
    struct Worker;
    void finish(Worker *worker, const Reply &reply);

    QString m_path;
    Limits m_limits;
    std::vector<std::unique_ptr<Worker>> m_workers;
};

} // namespace zeral::server
