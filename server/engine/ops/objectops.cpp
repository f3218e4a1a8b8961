#include "objectops.h"

#include <host/core/passhash.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <server/engine/ops/passwordrules.h>
#include <server/engine/ops/payload.h>
#include <server/engine/ops/pushes.h>
#include <server/engine/ops/rights.h>
#include <server/engine/ops/serverstate.h>
#include <server/engine/session/passwordhasher.h>
#include <server/engine/storage/auditlog.h>
#include <server/engine/storage/rolecatalogue.h>
#include <shared/datasets.h>
#include <shared/dbkeys.h>
#include <shared/rolenames.h>

#include <QTranslator>
#include <QtGlobal>

namespace zeral::server {

namespace {

bool isUser(const QString &type)
{
    return type == QLatin1String(db::system::USER);
}

bool isKnownDataset(const QString &dataset)
{
    for (const char *name : ALL_DATANAMES) {
        if (dataset == QLatin1String(name))
            return true;
    }
    return false;
}

Reply onlyPrivileged(TYPE_ID uid)
{
    return Reply::fail(proto::StatusForbidden,
                       QT_TRANSLATE_NOOP("ZRServer",
                                         "Изменять объекты этого вида может только супервизор или "
                                         "администратор."),
                       uid);
}

} // namespace

ObjectOps::ObjectOps(ServerState &state)
    : m_state(state)
{}

ObjectOps::PasswordRequest ObjectOps::takePassword(QHash<QString, QString> *parameters)
{
    const auto flag = [parameters](const char *key) {
        return parameters->take(QLatin1String(key)).trimmed() == QLatin1String("1");
    };
    PasswordRequest request;
    request.reset = flag(db::user::CLEAR_PASSWORD);
    request.set = flag(db::user::SET_PASSWORD);
    request.clientHash = parameters->take(QLatin1String(db::user::PASSHASH));
    return request;
}

Reply ObjectOps::preparePassword(PasswordRequest *password, const ObjectInfo &stored, bool self,
                                 const QHash<QString, QString> &explicitParameters,
                                 QHash<QString, QString> *toSet, QStringList *toRemove)
{
    const TYPE_ID uid = stored.uid;
    const QString requireChange = QLatin1String(db::user::REQUIRE_CHANGE);
    if (password->reset && password->set)
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Пароль нельзя в одном запросе и сбросить, и задать."),
            uid);
    if (password->reset) {
        // The client's idea of the default password may be stale: the server's counts.
        const QString defaultPassword = PasswordRules(*m_state.store).defaultPassword();
        if (defaultPassword.isEmpty())
            return Reply::fail(
                proto::StatusConflict,
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Пароль по умолчанию в настройках системы не задан, поэтому "
                                  "сбросить пароль нельзя. Задайте пароль по умолчанию или "
                                  "назначьте пользователю новый пароль."),
                uid);
        password->clientHash = PassHash::encrypt(defaultPassword, QCryptographicHash::Md5);
        toSet->insert(requireChange, QStringLiteral("1"));
        return Reply::ok();
    }
    // A set without a password leaves the password, and so the obligation, as they are.
    if (!password->set || password->clientHash.isEmpty())
        return Reply::ok();
    if (uid == 0)
        return Reply::ok(); // a new user has no obligation to lift
    PasswordRules::Edit implied;
    if (self)
        implied = PasswordRules(*m_state.store).renewal(stored, m_state.clock().date());
    else if (stored.parameters.contains(requireChange))
        implied.removed.append(requireChange);
    for (auto it = implied.set.cbegin(); it != implied.set.cend(); ++it) {
        if (!explicitParameters.contains(it.key()))
            toSet->insert(it.key(), it.value());
    }
    for (const QString &key : qAsConst(implied.removed)) {
        if (!explicitParameters.contains(key))
            toRemove->append(key);
    }
    return Reply::ok();
}

bool ObjectOps::storePassword(TYPE_ID uid, const QString &clientHash)
{
    const QString hash = PasswordHasher::hash(clientHash);
    return !hash.isEmpty() && m_state.store->setPasswordHash(uid, hash);
}

bool ObjectOps::loginInUse(const QString &login, TYPE_ID except)
{
    return !m_state.store->usersWithLogin(login, Qt::CaseInsensitive, except).isEmpty();
}

Reply ObjectOps::snapshot(Request &request)
{
    QString dataset;
    quint32 afterUid = 0;
    qint32 pageSize = 0;
    if (!payload::read(request.command, dataset, afterUid, pageSize))
        return Reply::fail(proto::StatusMalformed,
                           QT_TRANSLATE_NOOP("ZRServer", "Запрос данных не читается."));
    if (!isKnownDataset(dataset))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Набора данных «%1» нет.")).arg(dataset));
    QByteArray page;
    bool more = false;
    if (!m_state.store->encodePage(dataset, afterUid, qBound(1, pageSize, proto::SnapshotPageSize),
                                   &page, &more))
        return Reply::internalError();
    page += ZRDataStream::pack(more);
    return Reply::ok(page);
}

Reply ObjectOps::roleCatalogue(Request &request)
{
    // The titles are stored as they were seeded, in Russian; the operator reads them in his
    // language where the server's catalogue has them.
    QList<RoleEntry> entries = m_state.store->roleCatalogue();
    if (const QTranslator *translator = m_state.languages.translator(request.session->language)) {
        for (RoleEntry &entry : entries) {
            const QString title = translator->translate(RoleCatalogue::TitleContext,
                                                        entry.title.toUtf8().constData());
            if (!title.isEmpty())
                entry.title = title;
        }
    }
    return Reply::ok(ZRDataStream::pack(entries));
}

Reply ObjectOps::checkUserChange(const Request &request, const Rights &rights,
                                 const ObjectInfo &stored, const QHash<QString, QString> &changes,
                                 bool passwordChange)
{
    namespace u = db::user;
    const TYPE_ID uid = stored.uid;
    const bool isNew = uid == 0;
    const bool self = !isNew && uid == request.session->uid;
    const bool root = !isNew && uid == m_state.rootUid;
    const QString oldTemplate = Pushes::roleTemplateOf(stored);
    const QString name = stored.parameters.value(QLatin1String(u::LOGIN));
    const auto forbidden = [uid](const ServerText &text) {
        return Reply::fail(proto::StatusForbidden, text, uid);
    };
    if (isNew && !rights.has(role::USER_CREATE))
        return forbidden(ServerText(
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для создания пользователей.")));

    const auto login = changes.constFind(QLatin1String(u::LOGIN));
    if (login != changes.cend() || isNew) {
        const QString newLogin = login != changes.cend() ? login.value() : QString();
        if (root)
            return Reply::fail(
                proto::StatusConflict,
                QT_TRANSLATE_NOOP("ZRServer", "Пользователя root нельзя переименовать."), uid);
        if (newLogin.trimmed().isEmpty())
            return Reply::fail(
                proto::StatusMalformed,
                QT_TRANSLATE_NOOP("ZRServer", "У пользователя должен быть логин. Введите логин."),
                uid);
        if (loginInUse(newLogin, uid))
            return Reply::fail(
                proto::StatusConflict,
                ServerText(QT_TRANSLATE_NOOP("ZRServer", "Логин «%1» уже занят. Выберите другой."))
                    .arg(newLogin),
                uid);
    }
    const auto newTemplate = changes.constFind(QLatin1String(u::ROLE_TEMPLATE));
    if (newTemplate != changes.cend() && !(isNew && newTemplate.value().isEmpty())) {
        if (self)
            return forbidden(ServerText(
                QT_TRANSLATE_NOOP("ZRServer", "Нельзя изменить собственный шаблон ролей.")));
        if (root)
            return Reply::fail(
                proto::StatusConflict,
                QT_TRANSLATE_NOOP("ZRServer", "Шаблон ролей пользователя root не меняется."), uid);
        if (!rights.has(role::ROLE_LINKUSER))
            return forbidden(ServerText(
                QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для назначения шаблонов ролей.")));
    }
    if (newTemplate != changes.cend() && !newTemplate.value().isEmpty()) {
        if (!m_state.store->roleTemplateExists(newTemplate.value()))
            return Reply::fail(proto::StatusNotFound,
                               ServerText(QT_TRANSLATE_NOOP("ZRServer", "Шаблона ролей «%1» нет."))
                                   .arg(newTemplate.value()),
                               uid);
        if (!rights.canHandOut(newTemplate.value()))
            return forbidden(
                ServerText(
                    QT_TRANSLATE_NOOP("ZRServer", "Вы не можете назначить шаблон ролей «%1»."))
                    .arg(newTemplate.value()));
    }
    if (changes.contains(QLatin1String(u::OBJECTSTATE))) {
        if (self)
            return forbidden(ServerText(
                QT_TRANSLATE_NOOP("ZRServer", "Нельзя заблокировать собственную учётную запись.")));
        if (root)
            return Reply::fail(
                proto::StatusConflict,
                QT_TRANSLATE_NOOP("ZRServer", "Пользователя root нельзя блокировать."), uid);
        if (!rights.has(role::USER_BLOCK))
            return forbidden(ServerText(
                QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для блокировки пользователей.")));
    }
    if (isNew)
        return Reply::ok();
    // Otherwise a user could lift his own obligation to change his password, or its expiry.
    if (self && !rights.has(role::USER_UPDATE)
        && (changes.contains(QLatin1String(u::REQUIRE_CHANGE))
            || changes.contains(QLatin1String(db::database::PASSWORD_EXPIRED))))
        return forbidden(QT_TRANSLATE_NOOP(
            "ZRServer", "Обязательную смену и срок действия собственного пароля может "
                        "изменить только оператор с правом изменения пользователей."));
    if (!self && !rights.canManage(oldTemplate))
        return forbidden(
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для изменения пользователя «%1»."))
                .arg(name));
    // The date of a block goes with the block; on its own it is an ordinary change.
    const bool onlyState
        = changes.contains(QLatin1String(u::OBJECTSTATE))
          && std::all_of(changes.keyBegin(), changes.keyEnd(), [](const QString &k) {
                 return k == QLatin1String(u::OBJECTSTATE)
                        || k == QLatin1String(u::OBJECTSTATEDATE);
             });
    if (!self && (passwordChange || !onlyState) && !rights.has(role::USER_UPDATE))
        return forbidden(ServerText(
            QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для изменения пользователей.")));
    return Reply::ok();
}

Reply ObjectOps::addObject(Request &request)
{
    ObjectInfo object;
    QList<_INHERIT_DATA> links;
    if (!payload::read(request.command, object, links))
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Запрос на создание объекта не читается."));
    QString dataset = ObjectStore::datasetForType(object.type);
    ObjectInfo parent;
    QString parentDataset;
    if (object.parent != 0 && !m_state.store->read(object.parent, &parent, &parentDataset))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Родительского объекта %1 нет."))
                .arg(object.parent));
    if (dataset.isEmpty())
        dataset = parentDataset;
    if (dataset.isEmpty())
        return Reply::fail(
            proto::StatusMalformed,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Неизвестный тип объекта «%1»."))
                .arg(object.type));

    const Rights rights(*request.session);
    PasswordRequest password = takePassword(&object.parameters);
    if (isUser(object.type)) {
        Reply checked
            = checkUserChange(request, rights, ObjectInfo(), object.parameters, password.changes());
        if (!checked.isOk())
            return checked;
        QStringList nothingToRemove;
        checked = preparePassword(&password, ObjectInfo(), false, object.parameters,
                                  &object.parameters, &nothingToRemove);
        if (!checked.isOk())
            return checked;
    } else if (!rights.isPrivileged()) {
        return onlyPrivileged(0);
    }
    for (const _INHERIT_DATA &link : qAsConst(links)) {
        const TYPE_ID other = link.child == 0 ? link.parent : link.child;
        if ((link.child == 0) == (link.parent == 0))
            return Reply::fail(
                proto::StatusMalformed,
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Связь нового объекта должна одним концом указывать на него."));
        if (!m_state.store->exists(other))
            return Reply::fail(
                proto::StatusNotFound,
                ServerText(QT_TRANSLATE_NOOP("ZRServer", "Связанного объекта %1 нет.")).arg(other));
    }

    object.uid = 0;
    object.parents.clear();
    object.children.clear();
    const TYPE_ID uid = m_state.store->insert(dataset, object);
    if (uid == 0)
        return Reply::internalError();
    QList<TYPE_ID> touched = {uid};
    for (_INHERIT_DATA link : qAsConst(links)) {
        touched.append(link.child == 0 ? link.parent : link.child);
        (link.child == 0 ? link.child : link.parent) = uid;
        if (!m_state.store->insertLink(link))
            return Reply::internalError();
    }
    if (isUser(object.type) && !password.clientHash.isEmpty()
        && !storePassword(uid, password.clientHash))
        return Reply::internalError();
    request.pushes.append(Pushes::changedObjects(*m_state.store, touched));
    return Reply::changed(uid, QStringLiteral("added %1 to %2").arg(object.type, dataset),
                          ZRDataStream::pack(qint32(uid)));
}

Reply ObjectOps::updateObject(Request &request)
{
    quint32 uid = 0, parent = 0;
    QString type;
    QHash<QString, QString> parameters;
    if (!payload::read(request.command, uid, type, parent, parameters))
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Запрос на изменение объекта не читается."));
    ObjectInfo stored;
    if (!m_state.store->read(uid, &stored))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Объекта %1 нет: возможно, его удалили."))
                .arg(uid),
            uid);
    if (stored.type != type)
        return Reply::fail(
            proto::StatusConflict,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Объект %1 другого типа: «%2»."))
                .arg(uid)
                .arg(stored.type),
            uid);
    PasswordRequest password;
    if (isUser(type))
        password = takePassword(&parameters);
    else
        takePassword(&parameters); // never stored on anything
    QHash<QString, QString> changes;
    for (auto it = parameters.cbegin(); it != parameters.cend(); ++it) {
        if (stored.parameters.value(it.key()) != it.value())
            changes.insert(it.key(), it.value());
    }
    const bool parentChange = parent != stored.parent;
    if (parentChange && parent != 0 && !m_state.store->exists(parent))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Родительского объекта %1 нет.")).arg(parent),
            uid);
    if (parentChange && m_state.store->isAncestorOrSelf(uid, parent))
        return Reply::fail(
            proto::StatusConflict,
            ServerText(
                QT_TRANSLATE_NOOP("ZRServer",
                                  "Объект %1 нельзя вложить в самого себя или в свой вложенный "
                                  "объект. Выберите другого родителя."))
                .arg(uid),
            uid);

    const Rights rights(*request.session);
    if (isUser(type)) {
        QHash<QString, QString> checkedChanges = changes;
        if (parentChange)
            checkedChanges.insert(QStringLiteral("parent"), QString::number(parent));
        Reply checked
            = checkUserChange(request, rights, stored, checkedChanges, password.changes());
        if (!checked.isOk())
            return checked;
    } else if (!rights.isPrivileged()) {
        return onlyPrivileged(uid);
    }
    // What a reset or a set implies is no change the operator asked for: it needs no right
    // of its own (a user setting his own password lifts his obligation with it).
    QHash<QString, QString> implied;
    QStringList removed;
    Reply prepared = preparePassword(&password, stored, uid == request.session->uid, parameters,
                                     &implied, &removed);
    if (!prepared.isOk())
        return prepared;
    for (auto it = implied.cbegin(); it != implied.cend(); ++it) {
        parameters.insert(it.key(), it.value());
        if (stored.parameters.value(it.key()) != it.value())
            changes.insert(it.key(), it.value());
    }

    if (!m_state.store->setParameters(uid, parameters)
        || !m_state.store->removeParameters(uid, removed)
        || (parentChange && !m_state.store->setParent(uid, parent)))
        return Reply::internalError();
    if (!password.clientHash.isEmpty() && !storePassword(uid, password.clientHash))
        return Reply::internalError();
    request.pushes.append(Pushes::changedObjects(*m_state.store, {uid}));
    QStringList keys = changes.keys() + removed;
    if (password.reset)
        keys.append(QStringLiteral("password reset"));
    else if (!password.clientHash.isEmpty())
        keys.append(QStringLiteral("password"));
    keys.sort();
    return Reply::changed(uid, QStringLiteral("changed: ") % keys.join(QLatin1Char(' ')));
}

Reply ObjectOps::removeObject(Request &request)
{
    quint32 uid = 0;
    QString type;
    if (!payload::read(request.command, uid, type))
        return Reply::fail(
            proto::StatusMalformed,
            QT_TRANSLATE_NOOP("ZRServer", "Запрос на удаление объекта не читается."));
    ObjectInfo stored;
    QString dataset;
    if (!m_state.store->read(uid, &stored, &dataset))
        return Reply::fail(
            proto::StatusNotFound,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Объекта %1 нет: возможно, его уже удалили."))
                .arg(uid),
            uid);
    if (stored.type != type)
        return Reply::fail(
            proto::StatusConflict,
            ServerText(QT_TRANSLATE_NOOP("ZRServer", "Объект %1 другого типа: «%2»."))
                .arg(uid)
                .arg(stored.type),
            uid);
    const Rights rights(*request.session);
    if (isUser(type)) {
        const QString login = stored.parameters.value(QLatin1String(db::user::LOGIN));
        if (uid == m_state.rootUid)
            return Reply::fail(proto::StatusConflict,
                               QT_TRANSLATE_NOOP("ZRServer", "Пользователя root удалить нельзя."),
                               uid);
        if (uid == request.session->uid)
            return Reply::fail(
                proto::StatusForbidden,
                QT_TRANSLATE_NOOP("ZRServer", "Нельзя удалить собственную учётную запись."), uid);
        if (!rights.has(role::USER_DELETE))
            return Reply::fail(
                proto::StatusForbidden,
                QT_TRANSLATE_NOOP("ZRServer", "Недостаточно прав для удаления пользователей."),
                uid);
        if (!rights.canManage(Pushes::roleTemplateOf(stored)))
            return Reply::fail(
                proto::StatusForbidden,
                ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                             "Недостаточно прав для удаления пользователя «%1»."))
                    .arg(login),
                uid);
    } else if (!rights.isPrivileged()) {
        return onlyPrivileged(uid);
    }
    QList<TYPE_ID> linked;
    if (!m_state.store->remove(uid, &linked))
        return Reply::internalError();
    request.pushes.append(Pushes::removed(dataset, {uid}));
    request.pushes.append(Pushes::changedObjects(*m_state.store, linked));
    Reply reply = Reply::changed(uid, QStringLiteral("removed %1").arg(type));
    reply.objectName = AuditLog::nameOf(stored); // the store can't tell it any more
    return reply;
}

} // namespace zeral::server
