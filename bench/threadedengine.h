#pragma once

// The server engine of a benchmark in a thread of its own, as the studio runs it, so that the
// benchmark's client and the engine don't share one event loop.

#include <host/core/passhash.h>
#include <server/engine/serverengine.h>

#include <QThread>

#include <functional>

namespace bench {

class ThreadedEngine
{
public:
    explicit ThreadedEngine(const zeral::server::ServerEngine::Options &options)
        : m_engine(new zeral::server::ServerEngine(options))
    {
        m_thread.start();
        m_engine->moveToThread(&m_thread);
    }
    ~ThreadedEngine()
    {
        zeral::server::ServerEngine *engine = m_engine;
        QMetaObject::invokeMethod(
            engine, [engine] { delete engine; }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }
    ThreadedEngine(const ThreadedEngine &) = delete;
    ThreadedEngine &operator=(const ThreadedEngine &) = delete;

    // Runs `work` in the engine's thread and waits for it.
    void run(const std::function<void(zeral::server::ServerEngine &)> &work)
    {
        zeral::server::ServerEngine *engine = m_engine;
        QMetaObject::invokeMethod(
            engine, [engine, &work] { work(*engine); }, Qt::BlockingQueuedConnection);
    }

    // Starts the engine and, if one is given, sets root's password; empty on success.
    QString start(const QString &rootPassword = QString())
    {
        QString error;
        run([&](zeral::server::ServerEngine &engine) {
            error = engine.start();
            if (error.isEmpty() && !rootPassword.isEmpty()
                && !engine.setRootPassword(
                    PassHash::encrypt(rootPassword, QCryptographicHash::Md5)))
                error = QStringLiteral("root's password not set");
            m_port = engine.port();
        });
        return error;
    }

    quint16 port() const { return m_port; }

private:
    QThread m_thread;
    zeral::server::ServerEngine *m_engine;
    quint16 m_port = 0;
};

} // namespace bench
