#include "embeddedserver.h"

#include <server/engine/serverengine.h>

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QLoggingCategory>
#include <QThread>

Q_LOGGING_CATEGORY(lcEmbedded, "zr.studio.server")

using zeral::server::ServerEngine;

EmbeddedServer::EmbeddedServer(QObject *parent)
    : QObject(parent)
{}

EmbeddedServer::~EmbeddedServer()
{
    stop();
}

void EmbeddedServer::start(const QString &databasePath, bool demo, quint16 preferredPort)
{
    stop();
    m_databasePath = databasePath;
    const QString folder = QFileInfo(databasePath).absolutePath();
    if (!QDir().mkpath(folder)) {
        emit failed(tr("Не удалось создать папку %1 для базы данных. Проверьте права на неё "
                       "или укажите другой файл параметром --db.")
                        .arg(folder));
        return;
    }
    // Two engines on one file would each miss the other's changes: the second studio of the
    // same database is told to join the first one instead.
    m_lock = std::make_unique<QLockFile>(databasePath + QLatin1String(".lock"));
    m_lock->setStaleLockTime(0);
    if (!m_lock->tryLock()) {
        m_lock.reset();
        emit failed(tr("База данных %1 уже открыта другой студией или сервером на этом "
                       "компьютере. Подключитесь к нему: zr-studio --server 127.0.0.1:%2, или "
                       "укажите другой файл параметром --db.")
                        .arg(databasePath)
                        .arg(preferredPort));
        return;
    }
    m_thread = new QThread(this);
    m_thread->setObjectName(QStringLiteral("embedded server"));
    m_thread->start();
    startEngine(demo, preferredPort);
}

void EmbeddedServer::startEngine(bool demo, quint16 port)
{
    ServerEngine::Options options;
    options.databasePath = m_databasePath;
    options.address = QHostAddress::LocalHost;
    options.port = port;
    options.demo = demo;
    options.smtpUrl = m_smtpUrl;
    auto *engine = new ServerEngine(options);
    engine->moveToThread(m_thread);
    m_engine = engine;
    // The engine is created, used and deleted under the control of this thread; the engine's
    // thread only runs the calls posted to it and posts back what came of them.
    QMetaObject::invokeMethod(engine, [this, engine, demo, port] {
        const QString databaseError = engine->openDatabase();
        const QString listenError = databaseError.isEmpty() ? engine->start() : QString();
        const quint16 listening = engine->port();
        QMetaObject::invokeMethod(this, [=] {
            if (engine != m_engine)
                return; // stopped meanwhile
            if (databaseError.isEmpty() && listenError.isEmpty()) {
                m_port = listening;
                qCInfo(lcEmbedded)
                    << "embedded server on 127.0.0.1 port" << listening << "with" << m_databasePath;
                emit started(listening);
                return;
            }
            destroyEngine();
            if (databaseError.isEmpty() && port != 0) {
                // The preferred port is taken, most likely by another studio or a zr-server.
                qCInfo(lcEmbedded) << "port" << port << "is taken, listening on any free port";
                startEngine(demo, 0);
                return;
            }
            const QString reason = databaseError.isEmpty() ? listenError : databaseError;
            qCWarning(lcEmbedded) << "embedded server failed:" << reason;
            stopThread();
            m_lock.reset();
            emit failed(reason);
        });
    });
}

void EmbeddedServer::destroyEngine()
{
    if (!m_engine)
        return;
    ServerEngine *engine = m_engine;
    m_engine = nullptr;
    m_port = 0;
    // Waits for whatever the engine's thread is doing first: calls run there in order.
    QMetaObject::invokeMethod(
        engine,
        [engine] {
            engine->stop();
            delete engine;
        },
        Qt::BlockingQueuedConnection);
}

void EmbeddedServer::stopThread()
{
    if (!m_thread)
        return;
    m_thread->quit();
    m_thread->wait();
    delete m_thread;
    m_thread = nullptr;
}

void EmbeddedServer::stop()
{
    destroyEngine();
    stopThread();
    m_lock.reset();
}

bool EmbeddedServer::rootPasswordIsSet()
{
    bool set = false;
    if (m_engine && isRunning())
        QMetaObject::invokeMethod(
            m_engine, [this] { return m_engine->rootPasswordIsSet(); },
            Qt::BlockingQueuedConnection, &set);
    return set;
}

bool EmbeddedServer::setRootPassword(const QString &clientHash)
{
    bool done = false;
    if (m_engine && isRunning())
        QMetaObject::invokeMethod(
            m_engine, [this, clientHash] { return m_engine->setRootPassword(clientHash); },
            Qt::BlockingQueuedConnection, &done);
    return done;
}
