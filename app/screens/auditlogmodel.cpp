#include "auditlogmodel.h"

#include "screenslogging.h"

#include <host/core/authdata.h>
#include <host/core/command.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <shared/wire.h>

#include <QColor>
#include <QTimer>

#include <limits>

namespace proto = zeral::proto;
using zeral::AuditRecord;

namespace {

const char *const TimeFormat = "dd.MM.yyyy HH:mm:ss";

struct Action
{
    const char *command;
    const char *title;
};

// The commands that write the log: what an operator changed, and what anybody was refused.
const Action actions[] = {
    {proto::command::Login, QT_TRANSLATE_NOOP("AuditLogModel", "Вход в систему")},
    {proto::command::Resume, QT_TRANSLATE_NOOP("AuditLogModel", "Возобновление сессии")},
    {proto::command::ChangePassword, QT_TRANSLATE_NOOP("AuditLogModel", "Смена своего пароля")},
    {proto::command::AddObject, QT_TRANSLATE_NOOP("AuditLogModel", "Создание объекта")},
    {proto::command::UpdateObject, QT_TRANSLATE_NOOP("AuditLogModel", "Изменение объекта")},
    {proto::command::RemoveObject, QT_TRANSLATE_NOOP("AuditLogModel", "Удаление объекта")},
    {proto::command::PrescribeRoleTemplate,
     QT_TRANSLATE_NOOP("AuditLogModel", "Назначение шаблона ролей")},
    {proto::command::AddPermissions, QT_TRANSLATE_NOOP("AuditLogModel", "Добавление прав")},
    {proto::command::UpdatePermissions, QT_TRANSLATE_NOOP("AuditLogModel", "Изменение прав")},
    {proto::command::EnrolFinger, QT_TRANSLATE_NOOP("AuditLogModel", "Запись отпечатка")},
    {proto::command::RemoveFinger, QT_TRANSLATE_NOOP("AuditLogModel", "Удаление отпечатка")},
    {proto::command::DisconnectUsers, QT_TRANSLATE_NOOP("AuditLogModel", "Отключение сессий")},
    {proto::command::UnlockLogin, QT_TRANSLATE_NOOP("AuditLogModel", "Снятие блокировки входа")},
    {proto::command::SendEmail, QT_TRANSLATE_NOOP("AuditLogModel", "Отправка письма")},
    {proto::command::ExecSql, QT_TRANSLATE_NOOP("AuditLogModel", "Запрос SQL")},
    {proto::command::AuditLog, QT_TRANSLATE_NOOP("AuditLogModel", "Чтение журнала действий")},
    {proto::command::SetConfirmer, QT_TRANSLATE_NOOP("AuditLogModel", "Указание подтверждающего")},
};

} // namespace

AuditLogModel::AuditLogModel(ZRServerInterface *server, QObject *parent)
    : QAbstractTableModel(parent)
    , m_server(server)
{
    if (m_server)
        connect(m_server, &ZRServerInterface::pushReceived, this, &AuditLogModel::onPush);
}

AuditLogModel::~AuditLogModel()
{
    if (m_server)
        m_server->cancelCallbacks(this);
}

QString AuditLogModel::actionTitle(const QString &command)
{
    for (const Action &action : actions) {
        if (command == QLatin1String(action.command))
            return tr(action.title);
    }
    return command;
}

QStringList AuditLogModel::knownActions()
{
    QStringList commands;
    for (const Action &action : actions)
        commands.append(QLatin1String(action.command));
    return commands;
}

void AuditLogModel::setFilter(const zeral::AuditFilter &filter)
{
    // Nothing may be fetched for the old filter while the rows go (a tester or view asks).
    m_more = false;
    ++m_generation;
    beginResetModel();
    m_filter = filter;
    m_rows.clear();
    m_more = true;
    m_loading = false;
    endResetModel();
    if (m_fetchAllDone)
        finishFetchAll(false);
    fetchMore(QModelIndex());
}

void AuditLogModel::fetchAll(std::function<void(bool)> done)
{
    m_fetchAllDone = std::move(done);
    if (!m_more && !m_loading)
        finishFetchAll(true);
    else if (!m_loading)
        fetchMore(QModelIndex());
}

void AuditLogModel::finishFetchAll(bool complete)
{
    const auto done = std::move(m_fetchAllDone);
    m_fetchAllDone = nullptr;
    if (done)
        done(complete);
}

int AuditLogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int AuditLogModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant AuditLogModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const AuditRecord &row = m_rows.at(index.row());
    if (role == Qt::DisplayRole) {
        switch (index.column()) {
        case TimeColumn:
            return row.at.toLocalTime().toString(QLatin1String(TimeFormat));
        case OperatorColumn:
            return row.operatorLogin;
        case PeerColumn:
            return row.peer;
        case ActionColumn:
            return actionTitle(row.command);
        case ObjectColumn:
            if (row.object == 0)
                return QString();
            return row.objectName.isEmpty() ? QStringLiteral("№ %1").arg(row.object)
                                            : row.objectName;
        case ResultColumn:
            return row.isSuccess() ? tr("Выполнено") : tr("Отказано (код %1)").arg(row.status);
        case ConfirmedByColumn:
            return row.confirmedBy;
        case DetailColumn:
            return row.detail;
        }
    } else if (role == Qt::ToolTipRole) {
        switch (index.column()) {
        case TimeColumn:
            return tr("%1 UTC").arg(row.at.toUTC().toString(QLatin1String(TimeFormat)));
        case ActionColumn:
            return row.command;
        case ObjectColumn:
            return row.object == 0 ? QVariant() : tr("Объект № %1").arg(row.object);
        case DetailColumn:
            return row.detail;
        }
    } else if (role == Qt::ForegroundRole && index.column() == ResultColumn && !row.isSuccess()) {
        return QColor(Qt::darkRed);
    }
    return {};
}

QVariant AuditLogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case TimeColumn:
        return tr("Время");
    case OperatorColumn:
        return tr("Оператор");
    case PeerColumn:
        return tr("Адрес");
    case ActionColumn:
        return tr("Действие");
    case ObjectColumn:
        return tr("Объект");
    case ResultColumn:
        return tr("Результат");
    case ConfirmedByColumn:
        return tr("Подтвердил");
    case DetailColumn:
        return tr("Подробности");
    }
    return {};
}

bool AuditLogModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && m_more && !m_loading;
}

void AuditLogModel::fetchMore(const QModelIndex &parent)
{
    if (!canFetchMore(parent))
        return;
    m_loading = true;
    const qint64 beforeId = m_rows.isEmpty() ? 0 : m_rows.constLast().id;
    const quint64 generation = m_generation;
    if (!m_server) {
        QTimer::singleShot(0, this, [this, generation] {
            Command lost;
            lost.status = proto::StatusConnectionLost;
            onPage(generation, lost);
        });
        return;
    }
    Command request
        = Command::named(QLatin1String(proto::command::AuditLog), AuthData::sessionId());
    request.data = ZRDataStream::pack(beforeId, PageSize, m_filter);
    m_server->send(
        request, [this, generation](Command &answer) { onPage(generation, answer); }, this);
}

void AuditLogModel::onPage(quint64 generation, Command &answer)
{
    if (generation != m_generation)
        return;
    if (!answer.isOk()) {
        m_loading = false;
        m_more = false; // until the operator reads again; a refusal won't pass by retrying
        const QString text = answer.status == proto::StatusConnectionLost
                                 ? tr("Нет соединения с сервером: журнал действий не прочитан.")
                                 : answer.errorText();
        qCWarning(lcStudioScreens) << "audit log page refused:" << answer.status << text;
        emit failed(text);
        finishFetchAll(false);
        return;
    }
    QList<AuditRecord> page;
    bool more = false;
    ZRDataStream in(answer.data);
    zeral::wire::readList(in, page);
    in >> more;
    if (in.status() != QDataStream::Ok || !in.atEnd()) {
        m_loading = false;
        m_more = false;
        emit failed(tr("Сервер прислал нечитаемую страницу журнала действий."));
        finishFetchAll(false);
        return;
    }
    // A row pushed while this page travelled may be in it as well.
    const qint64 below
        = m_rows.isEmpty() ? std::numeric_limits<qint64>::max() : m_rows.constLast().id;
    QList<AuditRecord> fresh;
    for (const AuditRecord &row : qAsConst(page)) {
        if (row.id < below)
            fresh.append(row);
    }
    // Still loading while the rows go in: whoever hears of them (a view, a tester) may ask for
    // more, and must not get a page below the rows of before.
    m_more = more;
    if (!fresh.isEmpty()) {
        beginInsertRows(QModelIndex(), m_rows.size(), m_rows.size() + fresh.size() - 1);
        m_rows += fresh;
        endInsertRows();
    }
    m_loading = false;
    emit rowsArrived();
    if (m_fetchAllDone) {
        if (m_more)
            fetchMore(QModelIndex());
        else
            finishFetchAll(true);
    }
}

void AuditLogModel::onPush(const Command &push)
{
    if (push.name != QLatin1String(proto::command::AuditAppended))
        return;
    AuditRecord row;
    ZRDataStream in(push.data);
    in >> row;
    if (in.status() != QDataStream::Ok || !in.atEnd()) {
        qCWarning(lcStudioScreens) << "unreadable audit log push";
        return;
    }
    // While the first page is on its way it will bring this row itself: the server pushed it
    // before it read the page. Rows older than the newest shown are never new.
    if (!m_filter.matches(row) || (m_rows.isEmpty() && m_loading)
        || (!m_rows.isEmpty() && row.id <= m_rows.constFirst().id))
        return;
    beginInsertRows(QModelIndex(), 0, 0);
    m_rows.prepend(row);
    endInsertRows();
    emit rowsArrived();
}
