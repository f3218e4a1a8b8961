<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>RoleCatalogue</name>
    <message>
        <location filename="../server/engine/storage/rolecatalogue.cpp" line="+29"/>
        <source>Пользователи</source>
        <translation>Users</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр пользователей</source>
        <translation>Viewing users</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Создание пользователей</source>
        <translation>Creating users</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Изменение пользователей</source>
        <translation>Changing users</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Удаление пользователей</source>
        <translation>Deleting users</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Блокировка пользователей</source>
        <translation>Blocking users</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Просмотр мобильных пользователей</source>
        <translation>Viewing mobile users</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр активных сессий</source>
        <translation>Viewing active sessions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Редактирование биометрических данных</source>
        <translation>Editing biometric data</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Вход в мобильное приложение</source>
        <translation>Logging in to the mobile application</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Подтверждение изменений</source>
        <translation>Confirmation of changes</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Создание пользователя требует подтверждения</source>
        <translation>Creating a user requires confirmation</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Изменение пользователя требует подтверждения</source>
        <translation>Changing a user requires confirmation</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Удаление пользователя требует подтверждения</source>
        <translation>Deleting a user requires confirmation</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Подтверждение создания пользователей</source>
        <translation>Confirming the creation of users</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Подтверждение изменения пользователей</source>
        <translation>Confirming changes of users</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Подтверждение удаления пользователей</source>
        <translation>Confirming the deletion of users</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Роли и права</source>
        <translation>Roles and rights</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Управление ролями пользователей</source>
        <translation>Managing users&apos; roles</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Назначение прав на объекты</source>
        <translation>Granting rights on objects</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Отключение сессий пользователей</source>
        <translation>Disconnecting users&apos; sessions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Изменение шаблонов ролей</source>
        <translation>Changing role templates</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Организационная структура</source>
        <translation>Organisational structure</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр сотрудников</source>
        <translation>Viewing employees</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр подразделений</source>
        <translation>Viewing departments</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр организаций</source>
        <translation>Viewing organisations</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Контроль доступа</source>
        <translation>Access control</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр объектов доступа</source>
        <translation>Viewing access objects</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр политик доступа</source>
        <translation>Viewing access policies</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Просмотр расписаний доступа</source>
        <translation>Viewing access schedules</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Просмотр настроек мониторинга</source>
        <translation>Viewing monitoring settings</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Отчёты и журналы</source>
        <translation>Reports and logs</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Создание и изменение отчётов</source>
        <translation>Creating and changing reports</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр журнала устройств</source>
        <translation>Viewing the device log</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр системного журнала</source>
        <translation>Viewing the system log</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Просмотр журнала действий</source>
        <translation>Viewing the audit log</translation>
    </message>
</context>
<context>
    <name>ZRServer</name>
    <message>
        <location filename="../server/engine/ops/accessops.cpp" line="+35"/>
        <source>Запрос назначения шаблона не читается.</source>
        <translation>The role template assignment request cannot be read.</translation>
    </message>
    <message>
        <location line="+5"/>
        <location line="+61"/>
        <location filename="../server/engine/ops/biometricops.cpp" line="+56"/>
        <location line="+46"/>
        <source>Пользователя %1 нет.</source>
        <translation>There is no user %1.</translation>
    </message>
    <message>
        <location line="-57"/>
        <location filename="../server/engine/ops/objectops.cpp" line="+216"/>
        <source>Шаблона ролей «%1» нет.</source>
        <translation>There is no role template “%1”.</translation>
    </message>
    <message>
        <location line="+7"/>
        <location filename="../server/engine/ops/objectops.cpp" line="-12"/>
        <source>Нельзя изменить собственный шаблон ролей.</source>
        <translation>You cannot change your own role template.</translation>
    </message>
    <message>
        <location line="+4"/>
        <location filename="../server/engine/ops/objectops.cpp" line="+7"/>
        <source>Недостаточно прав для назначения шаблонов ролей.</source>
        <translation>Insufficient permissions to assign role templates.</translation>
    </message>
    <message>
        <location line="+4"/>
        <location filename="../server/engine/ops/objectops.cpp" line="-3"/>
        <source>Шаблон ролей пользователя root не меняется.</source>
        <translation>The role template of the user root cannot be changed.</translation>
    </message>
    <message>
        <location line="+3"/>
        <location filename="../server/engine/ops/objectops.cpp" line="+14"/>
        <source>Вы не можете назначить шаблон ролей «%1».</source>
        <translation>You cannot assign the role template “%1”.</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Запрос шаблонов ролей не читается.</source>
        <translation>The role templates request cannot be read.</translation>
    </message>
    <message>
        <location line="+27"/>
        <source>Нельзя изменить собственные права на объекты.</source>
        <translation>You cannot change your own permissions on objects.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Недостаточно прав для назначения прав на объекты.</source>
        <translation>Insufficient permissions to grant permissions on objects.</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Объекта %1 нет: права на него не даны.</source>
        <translation>There is no object %1: no permissions on it were granted.</translation>
    </message>
    <message>
        <location line="+14"/>
        <location line="+26"/>
        <location line="+28"/>
        <source>Запрос прав не читается.</source>
        <translation>The permissions request cannot be read.</translation>
    </message>
    <message>
        <location line="-22"/>
        <source>Все права в наборе должны относиться к пользователю %1.</source>
        <translation>All permissions in the set must belong to user %1.</translation>
    </message>
    <message>
        <location line="+26"/>
        <location filename="../server/engine/ops/biometricops.cpp" line="-56"/>
        <source>Недостаточно прав для просмотра пользователей.</source>
        <translation>Insufficient permissions to view users.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/adminops.cpp" line="+32"/>
        <source>Запрос сессий не читается.</source>
        <translation>The sessions request cannot be read.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Недостаточно прав для просмотра активных сессий.</source>
        <translation>Insufficient permissions to view active sessions.</translation>
    </message>
    <message>
        <location line="+33"/>
        <source>Запрос отключения не читается.</source>
        <translation>The disconnection request cannot be read.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Нельзя отключить собственную сессию.</source>
        <translation>You cannot disconnect your own session.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Сессии уже нет: обновите список сессий.</source>
        <translation>The session no longer exists: refresh the list of sessions.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Недостаточно прав для отключения пользователя «%1».</source>
        <translation>Insufficient permissions to disconnect the user “%1”.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Сессия закрыта оператором %1. Войдите в систему заново.</source>
        <translation>Your session was closed by operator %1. Please log in again.</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Запрос заблокированных входов не читается.</source>
        <translation>The locked logins request cannot be read.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Недостаточно прав для просмотра заблокированных входов: нужно право изменять пользователей. Обратитесь к администратору.</source>
        <translation>Insufficient permissions to view locked logins: the right to change users is needed. Contact your administrator.</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Запрос снятия блокировки не читается.</source>
        <translation>The unlock request cannot be read.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Недостаточно прав для снятия блокировки входа: нужно право изменять пользователей. Обратитесь к администратору.</source>
        <translation>Insufficient permissions to unlock logins: the right to change users is needed. Contact your administrator.</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Недостаточно прав для снятия блокировки входа «%1».</source>
        <translation>Insufficient permissions to unlock the login “%1”.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Вход «%1» не заблокирован: блокировка уже снята или истекла. Обновите список.</source>
        <translation>The login “%1” is not locked: the lock has already been lifted or has expired. Refresh the list.</translation>
    </message>
    <message>
        <location line="+25"/>
        <source>Письмо не читается.</source>
        <translation>The mail cannot be read.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Недостаточно прав для отправки писем.</source>
        <translation>Insufficient permissions to send mail.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Не указан адрес получателя письма. Укажите адрес e-mail.</source>
        <translation>No recipient address is given for the mail. Enter an e-mail address.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Адрес получателя «%1» не подходит для письма: нужен ровно один адрес вида имя@домен.ru латиницей, без пробелов, имени и других адресов. Исправьте e-mail сотрудника и отправьте письмо снова.</source>
        <translation>The recipient address “%1” cannot be used for a mail: exactly one address of the form name@domain.com is needed, in Latin letters, without spaces, a name or other addresses. Correct the employee&apos;s e-mail and send the mail again.</translation>
    </message>
    <message>
        <location line="+23"/>
        <source>Сервер не смог поставить письмо в очередь. Повторите позже.</source>
        <translation>The server could not queue the mail. Try again later.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/auditops.cpp" line="+26"/>
        <source>Запрос журнала действий не читается.</source>
        <translation>The audit log request cannot be read.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Недостаточно прав для просмотра журнала действий. Обратитесь к администратору.</source>
        <translation>Insufficient permissions to view the audit log. Contact your administrator.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Страница журнала действий может содержать от 1 до %1 строк, а запрошено %2.</source>
        <translation>A page of the audit log may hold 1 to %1 rows, but %2 were requested.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Неверная позиция в журнале действий: %1.</source>
        <translation>Invalid position in the audit log: %1.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Поле фильтра журнала действий слишком длинное: не больше %1 знаков, а получено %2.</source>
        <translation>An audit log filter field is too long: at most %1 characters, but %2 were received.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Неизвестный фильтр результата в журнале действий: %1.</source>
        <translation>Unknown result filter in the audit log: %1.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Начало периода в фильтре журнала действий должно быть раньше его конца.</source>
        <translation>The start of the period in the audit log filter must be before its end.</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Запрос подтверждающего пользователя не читается.</source>
        <translation>The request naming the confirming user cannot be read.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Изменение должен подтвердить другой пользователь, а не тот, кто его вносит.</source>
        <translation>A change must be confirmed by another user, not by the one who makes it.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Подтверждающего пользователя %1 нет: возможно, его удалили.</source>
        <translation>There is no confirming user %1: they may have been deleted.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Пользователь «%1» заблокирован и не может подтверждать изменения.</source>
        <translation>The user “%1” is blocked and cannot confirm changes.</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Пользователь «%1» не может подтверждать изменения: его шаблону ролей не дано право подтверждения.</source>
        <translation>The user “%1” cannot confirm changes: their role template has no right to confirm.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/biometricops.cpp" line="-17"/>
        <source>Пальца с номером %1 нет: пальцы нумеруются от 0 до 9.</source>
        <translation>There is no finger number %1: fingers are numbered from 0 to 9.</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Недостаточно прав для изменения биометрических данных. Обратитесь к администратору.</source>
        <translation>Insufficient permissions to change biometric data. Contact your administrator.</translation>
    </message>
    <message>
        <location line="+9"/>
        <location filename="../server/engine/ops/objectops.cpp" line="+27"/>
        <source>Недостаточно прав для изменения пользователя «%1».</source>
        <translation>Insufficient permissions to change the user “%1”.</translation>
    </message>
    <message>
        <location line="+10"/>
        <location line="+14"/>
        <source>Запрос отпечатков не читается.</source>
        <translation>The fingerprints request cannot be read.</translation>
    </message>
    <message>
        <location line="+23"/>
        <source>Запрос на запись отпечатка не читается.</source>
        <translation>The fingerprint enrolment request cannot be read.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Шаблон отпечатка пуст. Снимите отпечаток ещё раз.</source>
        <translation>The fingerprint template is empty. Scan the fingerprint again.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Шаблон отпечатка больше %1 КиБ: такой не сохраняется. Проверьте считыватель.</source>
        <translation>The fingerprint template is larger than %1 KiB and is not stored. Check the reader.</translation>
    </message>
    <message>
        <location line="+25"/>
        <source>Запрос на удаление отпечатка не читается.</source>
        <translation>The fingerprint removal request cannot be read.</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>У пользователя нет отпечатка пальца %1.</source>
        <translation>The user has no fingerprint of finger %1.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/dispatcher.cpp" line="+82"/>
        <source>Учётная запись удалена или заблокирована; сессия завершена.</source>
        <translation>The account has been deleted or blocked; the session has ended.</translation>
    </message>
    <message>
        <location line="+39"/>
        <source>Ваша учётная запись удалена оператором %1. Сессия завершена.</source>
        <translation>Your account was deleted by operator %1. The session has ended.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Ваша учётная запись заблокирована оператором %1. Сессия завершена; обратитесь к администратору.</source>
        <translation>Your account was blocked by operator %1. The session has ended; contact your administrator.</translation>
    </message>
    <message>
        <location line="+42"/>
        <source>Сервер понимает только именованные команды.</source>
        <translation>The server understands named commands only.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Сервер не знает команды «%1». Обновите студию.</source>
        <translation>The server does not know the command “%1”. Update the studio.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Сначала войдите в систему.</source>
        <translation>Log in first.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Команда пришла с чужим идентификатором сессии.</source>
        <translation>The command came with another session&apos;s identifier.</translation>
    </message>
    <message>
        <location line="-107"/>
        <location line="+122"/>
        <source>База данных сервера занята или недоступна. Повторите позже.</source>
        <translation>The server&apos;s database is busy or unavailable. Try again later.</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Сервер не смог записать журнал.</source>
        <translation>The server could not write the log.</translation>
    </message>
    <message>
        <location line="+8"/>
        <location line="+6"/>
        <source>Сервер не смог сохранить изменение; ничего не изменено. Повторите позже.</source>
        <translation>The server could not save the change; nothing was changed. Try again later.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/objectops.cpp" line="-206"/>
        <source>Изменять объекты этого вида может только супервизор или администратор.</source>
        <translation>Only the supervisor or the administrator may change objects of this kind.</translation>
    </message>
    <message>
        <location line="+33"/>
        <source>Пароль нельзя в одном запросе и сбросить, и задать.</source>
        <translation>A password cannot be both reset and set in one request.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Пароль по умолчанию в настройках системы не задан, поэтому сбросить пароль нельзя. Задайте пароль по умолчанию или назначьте пользователю новый пароль.</source>
        <translation>No default password is set in the system settings, so the password cannot be reset. Set a default password or give the user a new password.</translation>
    </message>
    <message>
        <location line="+48"/>
        <source>Запрос данных не читается.</source>
        <translation>The data request cannot be read.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Набора данных «%1» нет.</source>
        <translation>There is no dataset “%1”.</translation>
    </message>
    <message>
        <location line="+43"/>
        <source>Недостаточно прав для создания пользователей.</source>
        <translation>Insufficient permissions to create users.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Пользователя root нельзя переименовать.</source>
        <translation>The user root cannot be renamed.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>У пользователя должен быть логин. Введите логин.</source>
        <translation>A user must have a login. Enter a login.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Логин «%1» уже занят. Выберите другой.</source>
        <translation>The login “%1” is already taken. Choose another one.</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Нельзя заблокировать собственную учётную запись.</source>
        <translation>You cannot block your own account.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Пользователя root нельзя блокировать.</source>
        <translation>The user root cannot be blocked.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Недостаточно прав для блокировки пользователей.</source>
        <translation>Insufficient permissions to block users.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Обязательную смену и срок действия собственного пароля может изменить только оператор с правом изменения пользователей.</source>
        <translation>Only an operator with the right to change users may change whether one&apos;s own password must be changed and when it expires.</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Недостаточно прав для изменения пользователей.</source>
        <translation>Insufficient permissions to change users.</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Запрос на создание объекта не читается.</source>
        <translation>The object creation request cannot be read.</translation>
    </message>
    <message>
        <location line="+7"/>
        <location line="+96"/>
        <source>Родительского объекта %1 нет.</source>
        <translation>There is no parent object %1.</translation>
    </message>
    <message>
        <location line="-89"/>
        <source>Неизвестный тип объекта «%1».</source>
        <translation>Unknown object type “%1”.</translation>
    </message>
    <message>
        <location line="+23"/>
        <source>Связь нового объекта должна одним концом указывать на него.</source>
        <translation>A link of the new object must point to it at one end.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Связанного объекта %1 нет.</source>
        <translation>There is no linked object %1.</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Запрос на изменение объекта не читается.</source>
        <translation>The object change request cannot be read.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Объекта %1 нет: возможно, его удалили.</source>
        <translation>There is no object %1: it may have been deleted.</translation>
    </message>
    <message>
        <location line="+6"/>
        <location line="+91"/>
        <source>Объект %1 другого типа: «%2».</source>
        <translation>Object %1 is of another type: “%2”.</translation>
    </message>
    <message>
        <location line="-67"/>
        <source>Объект %1 нельзя вложить в самого себя или в свой вложенный объект. Выберите другого родителя.</source>
        <translation>Object %1 cannot be placed inside itself or inside an object within it. Choose another parent.</translation>
    </message>
    <message>
        <location line="+55"/>
        <source>Запрос на удаление объекта не читается.</source>
        <translation>The object deletion request cannot be read.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Объекта %1 нет: возможно, его уже удалили.</source>
        <translation>There is no object %1: it may have been deleted already.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Пользователя root удалить нельзя.</source>
        <translation>The user root cannot be deleted.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Нельзя удалить собственную учётную запись.</source>
        <translation>You cannot delete your own account.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Недостаточно прав для удаления пользователей.</source>
        <translation>Insufficient permissions to delete users.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Недостаточно прав для удаления пользователя «%1».</source>
        <translation>Insufficient permissions to delete the user “%1”.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/passwordrules.cpp" line="+64"/>
        <source>Пароль учётной записи «%1» сброшен администратором. Чтобы войти, задайте новый пароль.</source>
        <translation>The password of the account “%1” was reset by an administrator. To log in, set a new password.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Срок действия пароля учётной записи «%1» не читается. Чтобы войти, задайте новый пароль.</source>
        <translation>The expiry date of the password of the account “%1” cannot be read. To log in, set a new password.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Срок действия пароля учётной записи «%1» истёк %2. Чтобы войти, задайте новый пароль.</source>
        <translation>The password of the account “%1” expired on %2. To log in, set a new password.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/reply.cpp" line="+43"/>
        <source>Сервер не смог выполнить запрос; ничего не изменено. Повторите позже или сообщите администратору.</source>
        <translation>The server could not carry out the request; nothing was changed. Try again later or tell your administrator.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/sessionops.cpp" line="+50"/>
        <source>Вход под именем «%1» временно закрыт после нескольких неудачных попыток. Повторите через %2 мин.</source>
        <translation>Logging in as “%1” is closed for a while after several failed attempts. Try again in %2 min.</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Пароль пользователя root ещё не задан. Задайте его при первом запуске студии или командой zr-server --init-root-password.</source>
        <translation>The password of the user root has not been set yet. Set it at the first start of the studio or with the command zr-server --init-root-password.</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Неверное имя пользователя или пароль. Проверьте раскладку клавиатуры и повторите.</source>
        <translation>Wrong user name or password. Check the keyboard layout and try again.</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Сервер не смог прочитать учётную запись.</source>
        <translation>The server could not read the account.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Учётная запись «%1» заблокирована. Обратитесь к администратору.</source>
        <translation>The account “%1” is blocked. Contact your administrator.</translation>
    </message>
    <message>
        <location line="+45"/>
        <source>Запрос входа не читается.</source>
        <translation>The login request cannot be read.</translation>
    </message>
    <message>
        <location line="+41"/>
        <source>Запрос восстановления сессии не читается.</source>
        <translation>The session resume request cannot be read.</translation>
    </message>
    <message>
        <location line="+9"/>
        <location line="+11"/>
        <source>Сессия завершена. Войдите в систему заново.</source>
        <translation>The session has ended. Please log in again.</translation>
    </message>
    <message>
        <location line="+31"/>
        <source>Запрос смены пароля не читается.</source>
        <translation>The password change request cannot be read.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Новый пароль не передан. Введите новый пароль и повторите.</source>
        <translation>No new password was sent. Enter a new password and try again.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Новый пароль должен отличаться от текущего. Придумайте другой.</source>
        <translation>The new password must differ from the current one. Choose another one.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/sqlops.cpp" line="+25"/>
        <source>Запрос SQL не читается или пуст.</source>
        <translation>The SQL request cannot be read or is empty.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Ваши предыдущие запросы SQL ещё выполняются (одновременно не больше %1). Дождитесь ответа на них и повторите.</source>
        <translation>Your earlier SQL requests are still running (at most %1 at a time). Wait for their answers and try again.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Сервер уже выполняет %1 запроса SQL других операторов. Повторите запрос через несколько секунд.</source>
        <translation>The server is already running %1 SQL requests of other operators. Try again in a few seconds.</translation>
    </message>
    <message>
        <location filename="../server/engine/ops/sqlreader.cpp" line="+92"/>
        <location line="+69"/>
        <source>Сервер не смог открыть базу данных для запроса SQL. Повторите позже.</source>
        <translation>The server could not open the database for the SQL request. Try again later.</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Запросы SQL с клиента могут только читать данные; отказано: %1.</source>
        <translation>SQL requests from a client may only read data; refused: %1.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Ошибка в запросе SQL: %1</source>
        <translation>Error in the SQL request: %1</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Сервер останавливается; запрос SQL прерван.</source>
        <translation>The server is stopping; the SQL request was interrupted.</translation>
    </message>
    <message>
        <location line="-8"/>
        <source>Запрос SQL выполнялся дольше %1 мс и был прерван. Сузьте запрос.</source>
        <translation>The SQL request ran longer than %1 ms and was stopped. Narrow the request down.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Ответ на запрос SQL больше %1 МиБ. Запросите меньше строк или столбцов.</source>
        <translation>The answer to the SQL request is larger than %1 MiB. Ask for fewer rows or columns.</translation>
    </message>
    <message>
        <location filename="../server/engine/mail/smtpclient.cpp" line="+86"/>
        <source>Адрес получателя «%1» неверен: письмо не может быть доставлено. Исправьте адрес и отправьте письмо снова.</source>
        <translation>The recipient address “%1” is not valid: the mail cannot be delivered. Correct the address and send the mail again.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Не удалось подготовить отправку почты (libcurl). Перезапустите сервер.</source>
        <translation>Sending mail could not be prepared (libcurl). Restart the server.</translation>
    </message>
    <message>
        <location line="+38"/>
        <source>Почтовый сервер %1 отклонил письмо (код %2: %3). Проверьте адрес получателя и настройки почтового сервера.</source>
        <translation>The mail server %1 refused the mail (code %2: %3). Check the recipient&apos;s address and the mail server settings.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Не удалось передать письмо почтовому серверу %1: %2. Проверьте, что он доступен и что его адрес в настройках верен.</source>
        <translation>The mail could not be handed to the mail server %1: %2. Check that it can be reached and that its address in the settings is right.</translation>
    </message>
</context>
</TS>
