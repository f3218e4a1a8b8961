// UserCtl, the task queue: every write of the screen and of its dialogs and wizards is a task.
// The processors send a task's request; the result handlers take the answered task off the
// queue, tell the window that asked and start the next one.

#include "userctl.h"

#include "userctl_p.h"
#include "usertaskdata.h"

#include <host/core/authdata.h>
#include <host/core/data.h>
#include <host/core/logging.h>
#include <host/core/maildeliverywatcher.h>
#include <host/core/protocol.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <shared/emailmessage.h>
#include <shared/inheritdata.h>
#include <shared/objectpermission.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QLocale>

using namespace userctl::detail;

namespace {

// Task kinds and the data keys their processors read.
const QString InheritChildPrefix = QStringLiteral("inherit-child-");
const QString InheritParentPrefix = QStringLiteral("inherit-parent-");

QString dataText(const zeral::TaskInfo &task, const QString &key)
{
    return task.data.value(key).toString();
}

} // namespace

// --- The queue -----------------------------------------------------------------------------

void UserCtl::addTask(zeral::TaskInfo task)
{
    if (m_acceptingConfirmer != 0)
        m_confirmedTasks.insert(task.id, m_acceptingConfirmer);
    m_taskQueue.tasks.append(task);
    // A running task's result handler starts the next one.
    if (m_taskQueue.tasks.size() >= 2 || m_taskQueue.paused)
        return;
    announceStarted(m_taskQueue.processNext());
}

void UserCtl::processNextTask()
{
    announceStarted(m_taskQueue.processNext());
}

void UserCtl::announceStarted(const zeral::TaskInfo &started)
{
    // Confirmed tasks that a failure took off the queue leave their confirmer behind.
    if (started.type.isEmpty())
        m_confirmedTasks.clear();
    if (!started.type.isEmpty())
        emit showMessage(tr("%1").arg(m_taskQueue.current().startMessage));
}

void UserCtl::notifyReceiver(const zeral::TaskInfo &task, zeral::TYPE_ID uid)
{
    if (!task.receiver || task.method.isEmpty())
        return;
    QMetaObject::invokeMethod(task.receiver, task.method.toLatin1().constData(),
                              Qt::QueuedConnection, Q_ARG(zeral::TYPE_ID, uid));
}

// --- The processors ------------------------------------------------------------------------

void UserCtl::beginTask(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << UserTaskData::loggable(task);
    nameConfirmerOf(task);
}

void UserCtl::nameConfirmerOf(const zeral::TaskInfo &task)
{
    const zeral::TYPE_ID confirmer = m_confirmedTasks.take(task.id);
    if (confirmer == 0)
        return;
    Command command = newCommand();
    command.name = QLatin1String(zeral::proto::command::SetConfirmer);
    command.type = zeral::proto::NamedCommand;
    command.sessionId = m_data->sessionId();
    command.data = ZRDataStream::pack(quint32(confirmer));
    // Sent before the task's own request on the same connection: the server takes them in order.
    sendQuery(command, handler(&UserCtl::confirmerNamedHandler));
}

zeral::TYPE_ID UserCtl::confirmerAmong(const QList<zeral::TYPE_ID> &identified) const
{
    for (const zeral::TYPE_ID uid : identified) {
        if (m_confirmerCandidates.contains(uid))
            return uid;
    }
    return 0;
}

void UserCtl::takeWizardTask(const zeral::TaskInfo &task, const QList<zeral::TYPE_ID> &identified)
{
    const zeral::TYPE_ID confirmer = confirmerAmong(identified);
    QMetaObject::invokeMethod(
        this,
        [this, task, confirmer] {
            if (confirmer != 0)
                m_confirmedTasks.insert(task.id, confirmer);
            addTask(task);
        },
        Qt::QueuedConnection);
}

void UserCtl::confirmerNamedHandler(Command &command)
{
    // The change goes on regardless: its audit row then names nobody beside the operator.
    if (command.status != zeral::proto::StatusOk)
        qCWarning(ucc()) << "confirmer not named" << command.status << command.errorText();
}

bool UserCtl::processSaveObject(const zeral::TaskInfo &task)
{
    beginTask(task);
    m_data->updateObject(UserTaskData::object(task), handler(&UserCtl::objectSavedHandler));
    return true;
}

bool UserCtl::processCreateObject(const zeral::TaskInfo &task)
{
    beginTask(task);
    zeral::ObjectInfo object = UserTaskData::object(task);
    object.uid = 0;
    QList<zeral::_INHERIT_DATA> links;
    const QList<QString> keys = task.data.uniqueKeys();
    for (const QString &key : keys) {
        zeral::_INHERIT_DATA link;
        if (key.startsWith(InheritChildPrefix)) {
            link.child = task.data.value(key).toUInt();
            link.linkType = key.mid(InheritChildPrefix.size()).toUInt();
        } else if (key.startsWith(InheritParentPrefix)) {
            link.parent = task.data.value(key).toUInt();
            link.linkType = key.mid(InheritParentPrefix.size()).toUInt();
        } else {
            continue;
        }
        links.append(link);
    }
    m_data->addObject(object, links, handler(&UserCtl::objectCreatedHandler));
    return true;
}

bool UserCtl::processPrescribeUser(const zeral::TaskInfo &task)
{
    beginTask(task);
    m_data->roleTemplatePrescribeUser(task.uid, dataText(task, QStringLiteral("PT_ROLETEMPLATE")),
                                      handler(&UserCtl::prescribeUserHandler));
    return true;
}

bool UserCtl::processDeleteObject(const zeral::TaskInfo &task)
{
    beginTask(task);
    zeral::ObjectInfo object;
    object.uid = task.uid;
    object.type = dataText(task, QStringLiteral("object_type"));
    m_data->removeObject(object, handler(&UserCtl::deleteObjectHandler));
    return true;
}

bool UserCtl::processUpdatePermissions(const zeral::TaskInfo &task)
{
    beginTask(task);
    m_data->updatePermissions(task.uid, UserTaskData::permissions(task),
                              handler(&UserCtl::updatePermissionsHandler));
    return true;
}

bool UserCtl::processAddPermissions(const zeral::TaskInfo &task)
{
    beginTask(task);
    m_data->addPermissions(UserTaskData::permissions(task),
                           handler(&UserCtl::updatePermissionsHandler));
    return true;
}

bool UserCtl::processSendEmail(const zeral::TaskInfo &task)
{
    beginTask(task);
    const QString language
        = Settings::value(QStringLiteral("mainwindow/language"), QLocale().name())
              .toString()
              .left(2);
    zeral::_EMAIL_MESSAGE message;
    message.to = dataText(task, QStringLiteral("addr_to"));
    message.subject = tr("Zeral-Desk v6 Mobile");
    message.parameters.insert(QLatin1String(zeral::email::LOCALE), language);
    message.parameters.insert(QLatin1String(zeral::email::IS_MOBILE_TOKEN), true);
    message.parameters.insert(QLatin1String(zeral::email::GREETINGS),
                              task.data.value(QStringLiteral("greetings")));
    message.parameters.insert(QLatin1String(zeral::email::TOKEN),
                              dataText(task, QStringLiteral("auth_data")));

    Command command = newCommand();
    command.name = QLatin1String(zeral::proto::command::SendEmail);
    command.type = zeral::proto::NamedCommand;
    // The server's request, so it names the operator's session like the data requests do.
    command.sessionId = m_data->sessionId();
    ZRDataStream out(&command.data, QIODevice::WriteOnly);
    out << message << AuthData::user();
    sendQuery(command, handler(&UserCtl::sendEmailHandler));
    return true;
}

bool UserCtl::processSaveToClipboard(const zeral::TaskInfo &task)
{
    qCDebug(ucc()) << "process task" << task.type << task.uid << UserTaskData::loggable(task);
    QGuiApplication::clipboard()->setText(dataText(task, QStringLiteral("text")),
                                          QClipboard::Clipboard);
    // Later, so that the task is set up as the running one like any other first.
    QMetaObject::invokeMethod(this, "saveClipboardHandler", Qt::QueuedConnection);
    return true;
}

// --- The result handlers -------------------------------------------------------------------

std::optional<zeral::TaskInfo> UserCtl::takeAnsweredTask()
{
    // Answers are tied to the queue by order only: the running task is the one answered. No
    // task is made for an empty queue, since every new task draws a number.
    if (m_taskQueue.tasks.isEmpty())
        return std::nullopt;
    std::optional<zeral::TaskInfo> answered = m_taskQueue.current();
    m_taskQueue.processed();
    return answered;
}

void UserCtl::failShownTask(const zeral::TaskInfo &failed, const Command &answer)
{
    notifyReceiver(failed, 0);
    m_taskQueue.removeTasks(failed);
    emit showMessage(failed.errorMessage);
    // The server's reason comes last, after the receiver has put its form back, so that the
    // operator reads why and not only that.
    const QString reason = answer.errorText();
    if (!reason.isEmpty()) {
        const QString text = failed.errorMessage.isEmpty()
                                 ? reason
                                 : tr("%1: %2").arg(failed.errorMessage, reason);
        QMetaObject::invokeMethod(
            this, [this, text] { emit showMessage(text, QColor(Qt::red)); },
            Qt::QueuedConnection);
    }
}

void UserCtl::finishShownTask(Command &command, const char *doneLog, const char *failLog)
{
    const std::optional<zeral::TaskInfo> answered = takeAnsweredTask();
    if (!answered)
        return;
    const zeral::TaskInfo &t = *answered;
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
        qCDebug(ucc()) << doneLog << t.uid;
    } else {
        qCWarning(ucc()) << failLog << t.uid << command.status;
        failShownTask(t, command);
    }
    processNextTask();
}

void UserCtl::objectSavedHandler(Command &command)
{
    finishShownTask(command, "object saved", "fail save object");
}

void UserCtl::objectCreatedHandler(Command &command)
{
    const std::optional<zeral::TaskInfo> answered = takeAnsweredTask();
    if (!answered)
        return;
    const zeral::TaskInfo &t = *answered;
    if (command.status == zeral::proto::StatusOk) {
        qint32 uid = 0;
        ZRDataStream in(command.data);
        in >> uid;
        m_templateWatchUids.append(zeral::TYPE_ID(uid));
        notifyReceiver(t, zeral::TYPE_ID(uid));
        qCDebug(ucc()) << "object created" << uid;
    } else {
        qCWarning(ucc()) << "fail create object" << command.status;
        failShownTask(t, command);
    }
    processNextTask();
}

void UserCtl::prescribeUserHandler(Command &command)
{
    finishShownTask(command, "user prescribed", "fail prescribe user");
}

void UserCtl::deleteObjectHandler(Command &command)
{
    const std::optional<zeral::TaskInfo> answered = takeAnsweredTask();
    if (!answered)
        return;
    const zeral::TaskInfo &t = *answered;
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
    } else {
        qCWarning(ucc()) << "fail delete object" << t.uid << command.status;
        m_taskQueue.removeTasks(t);
        notifyReceiver(t, 0);
    }
    processNextTask();
}

void UserCtl::sendEmailHandler(Command &command)
{
    const std::optional<zeral::TaskInfo> answered = takeAnsweredTask();
    if (!answered)
        return;
    const zeral::TaskInfo &t = *answered;
    if (command.status == zeral::proto::StatusOk) {
        m_mailWatcher->noteQueued(dataText(t, QStringLiteral("addr_to")), command.data);
        notifyReceiver(t, t.uid);
        qCDebug(ucc()) << "email sent" << t.uid;
    } else {
        qCWarning(ucc()) << "fail send email" << command.status;
        // The mail carries credentials the person waits for: say why it didn't go.
        failShownTask(t, command);
    }
    processNextTask();
}

void UserCtl::updatePermissionsHandler(Command &command)
{
    const std::optional<zeral::TaskInfo> answered = takeAnsweredTask();
    if (!answered)
        return;
    const zeral::TaskInfo &t = *answered;
    if (command.status == zeral::proto::StatusOk) {
        notifyReceiver(t, t.uid);
    } else {
        qCWarning(ucc()) << "fail update permissions" << t.uid << command.status;
        m_taskQueue.removeTasks(t);
        notifyReceiver(t, 0);
    }
    // The open dialog gets the rights as the server has them now, whatever happened.
    m_data->getPermissions({t.uid}, handler(&UserCtl::getPermissionsHandler));
    processNextTask();
}

void UserCtl::saveClipboardHandler()
{
    qCDebug(ucc()) << "save clipboard, queue empty:"
                   << (m_taskQueue.tasks.isEmpty() ? "true" : "false");
    const std::optional<zeral::TaskInfo> answered = takeAnsweredTask();
    if (!answered)
        return;
    const zeral::TaskInfo &t = *answered;
    notifyReceiver(t, t.uid);
    qCDebug(ucc()) << "text saved to clipboard" << t.uid;
    processNextTask();
}

void UserCtl::getPermissionsHandler(Command &command)
{
    QList<zeral::OBJECT_PERMISSION> permissions;
    if (command.status == zeral::proto::StatusOk) {
        ZRDataStream in(command.data);
        in >> permissions;
    }
    emit permissionsRead(permissions);
}

void UserCtl::emptyHandler(Command &command)
{
    qCDebug(ucc())
        << QStringLiteral("cmd error object:%1 status:%2").arg(command.name).arg(command.status);
}
