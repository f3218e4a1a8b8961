#include "zrserverinterface.h"

#include <host/core/framecodec.h>
#include <host/core/logging.h>
#include <host/core/protocol.h>
#include <host/core/zrplugininterface.h>

#include <QCoreApplication>
#include <QSslSocket>
#include <QTimer>

namespace {

QString noConnectionText()
{
    return QCoreApplication::translate("ZRServerInterface", "Нет соединения с сервером");
}

} // namespace

ZRServerInterface::ZRServerInterface(QObject *parent)
    : QObject(parent)
    , m_socket(new QSslSocket(this))
    , m_reconnectTimer(new QTimer(this))
{
    m_reconnectTimer->setSingleShot(true);
    connect(m_reconnectTimer, &QTimer::timeout, this, &ZRServerInterface::openSocket);
    connect(m_socket, &QSslSocket::connected, this, [this] {
        if (!m_encrypted)
            onSocketReady();
    });
    connect(m_socket, &QSslSocket::encrypted, this, &ZRServerInterface::onSocketReady);
    connect(m_socket, &QSslSocket::readyRead, this, &ZRServerInterface::onReadyRead);
    connect(m_socket, &QSslSocket::disconnected, this, &ZRServerInterface::onSocketDisconnected);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &ZRServerInterface::onSocketError);
    // Not ignored: the handshake fails, and errorOccurred reports it with these reasons.
    connect(m_socket, qOverload<const QList<QSslError> &>(&QSslSocket::sslErrors), this,
            [this](const QList<QSslError> &errors) { m_sslErrors = errors; });
}

ZRServerInterface::~ZRServerInterface()
{
    // Nobody may be called back from a half-destroyed router.
    m_pending.clear();
    m_socket->disconnect(this);
}

void ZRServerInterface::connectToServer(const QString &host, quint16 port, bool encrypted)
{
    // An earlier connection is closed first: its end is not a loss to recover from.
    disconnectFromServer();
    m_host = host;
    m_port = port;
    m_encrypted = encrypted;
    m_reconnectAttempt = 0;
    setState(State::Connecting);
    openSocket();
}

void ZRServerInterface::disconnectFromServer()
{
    m_reconnectTimer->stop();
    if (m_state == State::Disconnected)
        return;
    setState(State::Disconnected);
    m_socket->flush(); // a last request, such as a logout, still goes out
    m_socket->abort();
    failRemoteRequests(QCoreApplication::translate("ZRServerInterface", "Соединение закрыто"));
}

void ZRServerInterface::setTlsConfiguration(const QSslConfiguration &configuration)
{
    m_tlsConfiguration = configuration;
}

void ZRServerInterface::setReconnectDelays(int firstMs, int maxMs)
{
    m_firstReconnectDelayMs = qMax(1, firstMs);
    m_maxReconnectDelayMs = qMax(m_firstReconnectDelayMs, maxMs);
}

quint64 ZRServerInterface::send(const Command &command, Callback callback, const void *owner)
{
    Command request = command;
    request.id = ++m_lastRequestId;
    request.status = zeral::proto::StatusNone;
    Pending pending{std::move(callback), owner, false, request.name};

    if (const auto handler = m_localHandlers.constFind(request.name);
        handler != m_localHandlers.constEnd()) {
        m_pending.insert(request.id, std::move(pending));
        const Handler run = handler.value();
        postAnswer(request.id, [run, request] {
            Command answer = request;
            run(answer);
            return answer;
        });
        return request.id;
    }

    if (const CommandType type{request.type, request.name}; m_pluginRoutes.contains(type)) {
        m_pending.insert(request.id, std::move(pending));
        postAnswer(request.id, [this, type, request] {
            Command answer = request;
            if (ZRPluginInterface *target = m_pluginRoutes.value(type))
                target->handleCommand(answer);
            else
                answer.status = zeral::proto::StatusNotFound; // unregistered meanwhile
            return answer;
        });
        return request.id;
    }

    pending.remote = true;
    m_pending.insert(request.id, std::move(pending));
    if (!canTransmit()) {
        postAnswer(request.id, [request] {
            return Command::failure(request, zeral::proto::StatusConnectionLost,
                                    noConnectionText());
        });
        return request.id;
    }
    qCDebug(lcHostNet) << "send" << request.id << request.name;
    transmit(request);
    return request.id;
}

void ZRServerInterface::cancelCallbacks(const void *owner)
{
    for (auto it = m_pending.begin(); it != m_pending.end();) {
        if (it->owner == owner)
            it = m_pending.erase(it);
        else
            ++it;
    }
}

void ZRServerInterface::registerLocalHandler(const QString &name, Handler handler)
{
    m_localHandlers.insert(name, std::move(handler));
}

void ZRServerInterface::unregisterLocalHandler(const QString &name)
{
    m_localHandlers.remove(name);
}

void ZRServerInterface::registerPlugin(ZRPluginInterface *plugin, const QList<CommandType> &types)
{
    for (const CommandType &type : types)
        m_pluginRoutes.insert(type, plugin);
}

void ZRServerInterface::unregisterPlugin(ZRPluginInterface *plugin)
{
    for (auto it = m_pluginRoutes.begin(); it != m_pluginRoutes.end();) {
        if (it.value() == plugin)
            it = m_pluginRoutes.erase(it);
        else
            ++it;
    }
    cancelCallbacks(plugin);
}

bool ZRServerInterface::canTransmit() const
{
    return m_state == State::Connected;
}

void ZRServerInterface::transmit(const Command &command)
{
    m_socket->write(FrameCodec::encode(command));
}

void ZRServerInterface::receive(Command &command)
{
    if (command.id == 0) {
        qCDebug(lcHostNet) << "push" << command.name;
        if (ZRPluginInterface *plugin = m_pluginRoutes.value({command.type, command.name}))
            plugin->handleCommand(command);
        emit pushReceived(command);
        return;
    }
    // Only requests that went to the server can be answered by it; a local one is not its.
    if (const auto it = m_pending.constFind(command.id); it == m_pending.cend() || !it->remote) {
        qCDebug(lcHostNet) << "answer to a forgotten request" << command.id << command.name;
        return;
    }
    complete(command.id, command);
}

void ZRServerInterface::failRemoteRequests(const QString &reason)
{
    QList<quint64> ids;
    for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it) {
        if (it->remote)
            ids.append(it.key());
    }
    std::sort(ids.begin(), ids.end()); // in the order they were sent
    for (quint64 id : ids) {
        Command request = Command::named(m_pending.value(id).name);
        request.id = id;
        Command answer = Command::failure(request, zeral::proto::StatusConnectionLost, reason);
        complete(id, answer);
    }
}

void ZRServerInterface::complete(quint64 id, Command &answer)
{
    const auto it = m_pending.find(id);
    if (it == m_pending.end())
        return; // cancelled, or already answered
    const Callback callback = std::move(it->callback);
    m_pending.erase(it);
    if (callback)
        callback(answer);
}

void ZRServerInterface::postAnswer(quint64 id, std::function<Command()> makeAnswer)
{
    QMetaObject::invokeMethod(
        this,
        [this, id, makeAnswer = std::move(makeAnswer)] {
            if (!m_pending.contains(id))
                return;
            Command answer = makeAnswer();
            answer.id = id;
            complete(id, answer);
        },
        Qt::QueuedConnection);
}

void ZRServerInterface::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit stateChanged(state);
}

void ZRServerInterface::openSocket()
{
    qCDebug(lcHostNet) << "connecting to" << m_host << m_port << (m_encrypted ? "(TLS)" : "");
    m_sslErrors.clear();
    if (m_encrypted) {
        m_socket->setSslConfiguration(m_tlsConfiguration);
        m_socket->connectToHostEncrypted(m_host, m_port);
    } else {
        m_socket->connectToHost(m_host, m_port);
    }
}

void ZRServerInterface::onSocketReady()
{
    qCInfo(lcHostNet) << "connected to" << m_host << m_port;
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_reconnectAttempt = 0;
    setState(State::Connected);
    emit connected();
}

void ZRServerInterface::onSocketError()
{
    if (m_state == State::Connected)
        return; // the disconnected signal follows and handles it
    const QString reason = m_socket->error() == QAbstractSocket::SslHandshakeFailedError
                               ? handshakeFailureText()
                               : m_socket->errorString();
    m_socket->abort();
    if (m_state == State::Connecting) {
        qCWarning(lcHostNet) << "cannot connect to" << m_host << m_port << ":" << reason;
        setState(State::Disconnected);
        emit connectionFailed(reason);
    } else if (m_state == State::Reconnecting) {
        scheduleReconnect();
    }
}

QString ZRServerInterface::handshakeFailureText() const
{
    QStringList details;
    for (const QSslError &error : m_sslErrors)
        details.append(error.errorString());
    if (details.isEmpty())
        details.append(m_socket->errorString());
    return QCoreApplication::translate("ZRServerInterface",
                                       "Не удалось установить защищённое соединение с сервером "
                                       "%1:%2 (%3). Проверьте, что сервер работает с TLS, и что "
                                       "его сертификат указан как доверенный.")
        .arg(m_host)
        .arg(m_port)
        .arg(details.join(QLatin1String("; ")));
}

void ZRServerInterface::onSocketDisconnected()
{
    if (m_state == State::Connected)
        dropConnection(
            QCoreApplication::translate("ZRServerInterface", "Сервер закрыл соединение"));
}

void ZRServerInterface::onReadyRead()
{
    while (m_state == State::Connected) {
        Command command;
        QString error;
        switch (FrameCodec::read(m_socket, &command, &error)) {
        case FrameCodec::ReadResult::Incomplete:
            return;
        case FrameCodec::ReadResult::Error:
            qCWarning(lcHostNet) << "resetting the connection:" << error;
            dropConnection(QCoreApplication::translate("ZRServerInterface",
                                                       "Сервер прислал повреждённые данные"));
            return;
        case FrameCodec::ReadResult::Frame:
            receive(command);
            break;
        }
    }
}

void ZRServerInterface::dropConnection(const QString &reason)
{
    qCWarning(lcHostNet) << "connection lost:" << reason;
    setState(State::Reconnecting);
    m_socket->abort();
    failRemoteRequests(reason);
    emit connectionLost(reason);
    if (m_state == State::Reconnecting) // a listener may have disconnected meanwhile
        scheduleReconnect();
}

void ZRServerInterface::scheduleReconnect()
{
    const int shift = qMin(m_reconnectAttempt, 16);
    const int delay
        = int(qMin<qint64>(qint64(m_firstReconnectDelayMs) << shift, m_maxReconnectDelayMs));
    ++m_reconnectAttempt;
    emit reconnecting(m_reconnectAttempt, delay);
    if (m_state == State::Reconnecting) // a listener may have given the server up meanwhile
        m_reconnectTimer->start(delay);
}
