<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_GB">
<context>
    <name>ConnectedUsersInfoWidget</name>
    <message>
        <location filename="../src/connectedusersinfowidget.cpp" line="+37"/>
        <source>Адрес</source>
        <translation>Address</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Шаблон ролей</source>
        <translation>Role template</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Подключен</source>
        <translation>Connected</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Длительность подключения</source>
        <translation>Connection duration</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Время бездействия</source>
        <translation>Idle time</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Form</source>
        <translation>Form</translation>
    </message>
</context>
<context>
    <name>ConnectedUsersModel</name>
    <message>
        <location filename="../src/connectedusersmodel.cpp" line="+100"/>
        <source>Логин</source>
        <translation>Login</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Адрес</source>
        <translation>Address</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Шаблон ролей</source>
        <translation>Role template</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Начало сессии</source>
        <translation>Session start</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Длительность сессии</source>
        <translation>Session duration</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Время бездействия</source>
        <translation>Idle time</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Категория</source>
        <translation>Category</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Идентификатор</source>
        <translation>ID</translation>
    </message>
</context>
<context>
    <name>IdentificationPolicy</name>
    <message>
        <location filename="../src/identificationpolicy.cpp" line="+9"/>
        <source>Логин + пароль</source>
        <translation>Login + password</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Логин + биометрическая информация</source>
        <translation>Login + biometric data</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Логин + пароль + биометрическая информация</source>
        <translation>Login + password + biometric data</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Авторизация Kerberos</source>
        <translation>Kerberos authentication</translation>
    </message>
</context>
<context>
    <name>MobileUserCheckModel</name>
    <message>
        <location filename="../src/wizards/mobileusercheckmodel.cpp" line="+110"/>
        <source>ФИО</source>
        <translation>Full name</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>e-mail</source>
        <translation>Email</translation>
    </message>
</context>
<context>
    <name>MobileUserChekWizardPage</name>
    <message>
        <location filename="../src/wizards/mobileuserchekwizardpage.ui" line="+14"/>
        <source>Сохранение</source>
        <translation>Saving</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Выбрать все</source>
        <translation>Select all</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Снять все</source>
        <translation>Clear all</translation>
    </message>
    <message>
        <location line="+39"/>
        <source>Сохранить логин/пароль в буфер обмена</source>
        <translation>Copy login/password to the clipboard</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Отправить логин/пароль пользователям по e-mail</source>
        <translation>Email login/password to the users</translation>
    </message>
    <message>
        <location filename="../src/wizards/mobileuserchekwizardpage.cpp" line="+126"/>
        <source>Добавление пользователя %1</source>
        <translation>Adding user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка добавления пользователя %1</source>
        <translation>Failed to add user %1</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Применение параметров роли пользователя</source>
        <translation>Applying the user&apos;s role settings</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка применения параметров роли пользователя</source>
        <translation>Failed to apply the user&apos;s role settings</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Сохранение параметров авторизации %1 в буфер обмена</source>
        <translation>Copying the credentials for %1 to the clipboard</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Ошибка сохранения параметров авторизации %1 в буфер обмена</source>
        <translation>Failed to copy the credentials for %1 to the clipboard</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Отправка параметров авторизации на e-mail %1</source>
        <translation>Sending the credentials to %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка отправки параметров авторизации на e-mail %1</source>
        <translation>Failed to send the credentials to %1</translation>
    </message>
</context>
<context>
    <name>MobileUserProperties</name>
    <message>
        <location filename="../src/mobileuserproperties.ui" line="+14"/>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Личная информация</source>
        <translation>Personal information</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Сотрудник</source>
        <translation>Employee</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Должность</source>
        <translation>Position</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Подразделение</source>
        <translation>Department</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Идентификация</source>
        <translation>Identification</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Логин</source>
        <translation>Login</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Срок действия пароля</source>
        <translation>Password expiry</translation>
    </message>
    <message>
        <location line="+76"/>
        <source>Основной e-mail сотрудника не совпадает с текущим логином!</source>
        <translation>The employee&apos;s primary email does not match the current login!</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Изменить пароль</source>
        <translation>Change password</translation>
    </message>
    <message>
        <location filename="../src/mobileuserproperties.cpp" line="+136"/>
        <source>Сохранение параметров пользователя %1</source>
        <translation>Saving the settings of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сохранения параметров пользователя %1</source>
        <translation>Failed to save the settings of user %1</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Ошибка сохранения параметров пользователя</source>
        <translation>Failed to save the user settings</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Параметры пользователя сохранены</source>
        <translation>User settings saved</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Ошибка установки пароля</source>
        <translation>Failed to set the password</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Пароль пользователя %1 установлен</source>
        <translation>Password set for user %1</translation>
    </message>
    <message>
        <location line="+25"/>
        <source>Установка пароля пользователя %1</source>
        <translation>Setting the password of user %1</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Ошибка установки пароля пользователя %1</source>
        <translation>Failed to set the password of user %1</translation>
    </message>
</context>
<context>
    <name>MobileUserPropertiesDialog</name>
    <message>
        <location filename="../src/mobileuserpropertiesdialog.cpp" line="+47"/>
        <source>Основное</source>
        <translation>General</translation>
    </message>
    <message>
        <location line="+30"/>
        <source>Передать логин/пароль</source>
        <translation>Hand over login/password</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Отправить учетные данные по e-mail</source>
        <translation>Send credentials by email</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Сохранить учетные данные в буфер обмена</source>
        <translation>Copy credentials to the clipboard</translation>
    </message>
    <message>
        <location line="+26"/>
        <source>Генерация пароля</source>
        <translation>Generate Password</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Для пользователя %1, будет создан новый пароль
Продолжить?</source>
        <translation>A new password will be generated for user %1.
Continue?</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Сброс пароля пользователя %1</source>
        <translation>Resetting the password of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сброса пароля пользователя %1</source>
        <translation>Failed to reset the password of user %1</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Данные скопированы в буфер обмена</source>
        <translation>Credentials copied to the clipboard</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Отправка параметров авторизации на e-mail %1</source>
        <translation>Sending the credentials to %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка отправки параметров авторизации на e-mail %1</source>
        <translation>Failed to send the credentials to %1</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Ошибка сохранения пароля: сервер не принял новый пароль, с переданными данными войти нельзя</source>
        <translation>Failed to save the password: the server did not accept the new password, so the credentials handed over cannot be used to log in</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Ошибка сохранения пароля</source>
        <translation>Failed to save the password</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Ошибка отправки сообщения</source>
        <translation>Failed to send the message</translation>
    </message>
</context>
<context>
    <name>MobileUserSelectWizardPage</name>
    <message>
        <location filename="../src/wizards/mobileuserselectwizardpage.ui" line="+14"/>
        <source>Выбор роли</source>
        <translation>Role selection</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Мобильный сотрудник</source>
        <translation>Mobile employee</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Мобильный руководитель</source>
        <translation>Mobile manager</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>Выбрать все</source>
        <translation>Select all</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Снять все</source>
        <translation>Clear all</translation>
    </message>
    <message>
        <location line="+33"/>
        <source>Показать/скрыть сотрудников без e-mail</source>
        <translation>Show/hide employees without email</translation>
    </message>
    <message>
        <location filename="../src/wizards/mobileuserselectwizardpage.cpp" line="+33"/>
        <source>Сотрудник</source>
        <translation>Employee</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>E-mail</source>
        <translation>E-mail</translation>
    </message>
</context>
<context>
    <name>NewMobileUserWizard</name>
    <message>
        <location filename="../src/wizards/newmobileuserwizard.cpp" line="+41"/>
        <source> и ещё %1</source>
        <translation> and %1 more</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>%1: %2.</source>
        <translation>%1: %2.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 — %2: %3.</source>
        <translation>%1 — %2: %3.</translation>
    </message>
    <message>
        <location line="+28"/>
        <source>Мастер добавления мобильных пользователей</source>
        <translation>New Mobile Users Wizard</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Полномочия на подразделения</source>
        <translation>Department permissions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Полномочия на объекты доступа</source>
        <translation>Access object permissions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Полномочия на отчеты</source>
        <translation>Report permissions</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Полномочия</source>
        <translation>Permissions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Сохранение</source>
        <translation>Saving</translation>
    </message>
    <message>
        <location line="+51"/>
        <source>Созданы: %1 из %2.</source>
        <translation>Created: %1 of %2.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Созданы полностью: %1.</source>
        <translation>Fully created: %1.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Создан, но настроен не полностью: %1. Завершите настройку в свойствах пользователя или удалите его.</source>
        <translation>Created but not fully set up: %1. Finish the setup in the user&apos;s properties or delete the user.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Не созданы: %1.</source>
        <translation>Not created: %1.</translation>
    </message>
    <message>
        <location line="+40"/>
        <source>Не отправлены, сервер повторит попытку</source>
        <translation>Not sent yet, the server will try again</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Не доставлены, попытки прекращены; передайте учетные данные из свойств пользователя</source>
        <translation>Not delivered, the server has given up; hand the credentials over from the user&apos;s properties</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Ждут, пока на сервере не настроят почту</source>
        <translation>Waiting until mail is configured on the server</translation>
    </message>
    <message>
        <location line="-5"/>
        <source>Письма с учетными данными: доставлено %1 из %2.</source>
        <translation>Credentials emails: %1 of %2 delivered.</translation>
    </message>
</context>
<context>
    <name>NewUserWizard</name>
    <message>
        <location filename="../src/wizards/newuserwizard.cpp" line="+41"/>
        <source>Мастер добавления нового пользователя</source>
        <translation>New User Wizard</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Полномочия на подразделения</source>
        <translation>Department permissions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Полномочия на объекты доступа</source>
        <translation>Access object permissions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Полномочия на отчеты</source>
        <translation>Report permissions</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Полномочия на группы доступа</source>
        <translation>Access group permissions</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Полномочия на настройки мониторинга</source>
        <translation>Monitoring settings permissions</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Полномочия</source>
        <translation>Permissions</translation>
    </message>
</context>
<context>
    <name>PasswordDialog</name>
    <message>
        <location filename="../src/passworddialog.ui" line="+17"/>
        <source>Смена пароля</source>
        <translation>Change Password</translation>
    </message>
    <message>
        <location line="+45"/>
        <source>Текущий пароль</source>
        <translation>Current password</translation>
    </message>
    <message>
        <location line="+74"/>
        <source>Текущий пароль введен неверно</source>
        <translation>The current password is incorrect</translation>
    </message>
</context>
<context>
    <name>UserCtl</name>
    <message>
        <location filename="../src/userctl.ui" line="+14"/>
        <location line="+11"/>
        <location filename="../src/userctl.cpp" line="+61"/>
        <location line="+363"/>
        <source>Пользователи</source>
        <translation>Users</translation>
    </message>
    <message>
        <location line="+70"/>
        <location filename="../src/userctl.cpp" line="+1"/>
        <source>Мобильные пользователи</source>
        <translation>Mobile users</translation>
    </message>
    <message>
        <location line="+61"/>
        <source>Сессии</source>
        <translation>Sessions</translation>
    </message>
    <message>
        <location line="+83"/>
        <source>toolBar</source>
        <translation>Toolbar</translation>
    </message>
    <message>
        <location line="+23"/>
        <location line="+86"/>
        <source>Добавить</source>
        <translation>Add</translation>
    </message>
    <message>
        <location line="-83"/>
        <source>Добавление нового пользователя</source>
        <translation>Add a new user</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Сканировать</source>
        <translation>Scan</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Получить биометрическую информацию пользователя</source>
        <translation>Capture the user&apos;s biometric data</translation>
    </message>
    <message>
        <location line="+11"/>
        <location line="+91"/>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
    <message>
        <location line="-88"/>
        <source>Удалить пользователя</source>
        <translation>Delete the user</translation>
    </message>
    <message>
        <location line="+11"/>
        <location line="+55"/>
        <location filename="../src/userctl.cpp" line="-139"/>
        <location line="+15"/>
        <location line="+15"/>
        <source>Свойства</source>
        <translation>Properties</translation>
    </message>
    <message>
        <location line="-52"/>
        <source>Показать свойства пользователя</source>
        <translation>Show the user&apos;s properties</translation>
    </message>
    <message>
        <location line="+8"/>
        <location line="+3"/>
        <location filename="../src/userctl_lists.cpp" line="+80"/>
        <source>Разблокировать</source>
        <translation>Unblock</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Отключить</source>
        <translation>Disconnect</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Отключить клиента от студии</source>
        <translation>Disconnect the client from the studio</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Обновить</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Обновить данные о подключенных сессиях</source>
        <translation>Refresh the connected sessions</translation>
    </message>
    <message>
        <location line="+30"/>
        <location filename="../src/userctl_lists.cpp" line="+0"/>
        <source>Блокировать</source>
        <translation>Block</translation>
    </message>
    <message>
        <location filename="../src/userctl.cpp" line="-41"/>
        <source>Фильтр по логину пользователя</source>
        <translation>Filter by user login</translation>
    </message>
    <message>
        <location line="+18"/>
        <location line="+14"/>
        <location line="+15"/>
        <source>Роли доступа</source>
        <translation>Access roles</translation>
    </message>
    <message>
        <location line="+42"/>
        <source>Логин</source>
        <translation>Login</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Тип объекта</source>
        <translation>Object type</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>ФИО</source>
        <translation>Full name</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Шаблон ролей</source>
        <translation>Role template</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Состояние</source>
        <translation>Status</translation>
    </message>
    <message>
        <location line="+62"/>
        <source>Активные сессии</source>
        <translation>Active sessions</translation>
    </message>
    <message>
        <location filename="../src/userctl_blocking.cpp" line="+46"/>
        <source>Блокировка пользователей</source>
        <translation>User Blocking</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Заблокировать выбранных пользователей?</source>
        <translation>Block the selected users?</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Разблокировать выбранных пользователей?</source>
        <translation>Unblock the selected users?</translation>
    </message>
    <message>
        <location line="+22"/>
        <source>Сохранение параметров пользователя %1</source>
        <translation>Saving the settings of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сохранения параметров пользователя %1</source>
        <translation>Failed to save the settings of user %1</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Изменение блокировки пользователя %1 успешно</source>
        <translation>Block status of user %1 changed</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Ошибка изменения блокировки пользователя</source>
        <translation>Failed to change the user&apos;s block status</translation>
    </message>
    <message>
        <location filename="../src/userctl_confirmation.cpp" line="+59"/>
        <source>Подтвердить</source>
        <translation>Confirm</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отклонить</source>
        <translation>Decline</translation>
    </message>
    <message>
        <location line="+131"/>
        <source>Персональные данные</source>
        <translation>Personal Data</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Запрещено редактирование биометрической информации</source>
        <translation>Editing biometric data is not allowed</translation>
    </message>
    <message>
        <location filename="../src/userctl_deletion.cpp" line="+23"/>
        <source>Удаление сотрудников</source>
        <translation>Delete Employees</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Недостаточно прав</source>
        <translation>Insufficient permissions</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Пользователь root не будет удален: запрещено удаление.</source>
        <translation>User root will not be deleted: deletion is not allowed.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Мастер удаления пользователей</source>
        <translation>Delete Users Wizard</translation>
    </message>
    <message>
        <location filename="../src/userctl_editors.cpp" line="+69"/>
        <location line="+114"/>
        <location line="+56"/>
        <source>Добавление</source>
        <translation>Add User</translation>
    </message>
    <message>
        <location line="-169"/>
        <location line="+114"/>
        <location line="+56"/>
        <source>Ошибка добавления пользователя
Нет доступа</source>
        <translation>Failed to add the user
Access denied</translation>
    </message>
    <message>
        <location line="-92"/>
        <source>Запрет доступа</source>
        <translation>Access Denied</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Недостаточно прав для просмотра параметров пользователя</source>
        <translation>Insufficient permissions to view the user&apos;s settings</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Свойства пользователя %1</source>
        <translation>Properties of user %1</translation>
    </message>
    <message>
        <location filename="../src/userctl_lists.cpp" line="+32"/>
        <source>%1 %2 %3</source>
        <translation>%1 %2 %3</translation>
    </message>
    <message>
        <location filename="../src/userctl_queue.cpp" line="+64"/>
        <source>%1</source>
        <translation>%1</translation>
    </message>
    <message>
        <location line="+136"/>
        <source>Zeral-Desk v6 Mobile</source>
        <translation>Zeral-Desk v6 Mobile</translation>
    </message>
    <message>
        <location line="+53"/>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <location filename="../src/userctl_sessions.cpp" line="+68"/>
        <source>Не определено</source>
        <translation>Not defined</translation>
    </message>
    <message>
        <location line="+154"/>
        <source>Вы не можете отключить себя!</source>
        <translation>You cannot disconnect yourself!</translation>
    </message>
</context>
<context>
    <name>UserInfoWidget</name>
    <message>
        <location filename="../src/userinfowidget.cpp" line="+42"/>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <location line="+58"/>
        <source>Выбрано пользователей:</source>
        <translation>Users selected:</translation>
    </message>
    <message>
        <location line="+28"/>
        <source>Шаблон ролей</source>
        <translation>Role template</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Логин + пароль</source>
        <translation>Login + password</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Логин + биометрическая информация</source>
        <translation>Login + biometric data</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Логин + пароль + биометрическая информация</source>
        <translation>Login + password + biometric data</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Авторизация Kerberos</source>
        <translation>Kerberos authentication</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Неизвестен</source>
        <translation>Unknown</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Политика идентификации</source>
        <translation>Identification policy</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Пароль установлен</source>
        <translation>Password set</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Заблокирован</source>
        <translation>Blocked</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Истек срок действия пароля</source>
        <translation>Password expired</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Необходимо сменить пароль</source>
        <translation>Password change required</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Состояние</source>
        <translation>Status</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Связанный сотрудник</source>
        <translation>Linked employee</translation>
    </message>
</context>
<context>
    <name>UserPasswordWizardPage</name>
    <message>
        <location filename="../src/wizards/userpasswordwizardpage.ui" line="+14"/>
        <source>WizardPage</source>
        <translation>Wizard page</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Пароль</source>
        <translation>Password</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Использовать пароль по умолчанию</source>
        <translation>Use the default password</translation>
    </message>
    <message>
        <location line="+23"/>
        <source>Сменить пароль при первом входе</source>
        <translation>Change password at first login</translation>
    </message>
    <message>
        <location line="+31"/>
        <source>Срок действия пароля</source>
        <translation>Password expiry</translation>
    </message>
    <message>
        <location filename="../src/wizards/userpasswordwizardpage.cpp" line="+109"/>
        <source>Изменение параметров пользователя %1</source>
        <translation>Changing the settings of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка изменения параметров пользователя %1</source>
        <translation>Failed to change the settings of user %1</translation>
    </message>
</context>
<context>
    <name>UserPermissions</name>
    <message>
        <location filename="../src/userpermissions.ui" line="+14"/>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Запрещено редактирование своих полномочий.</source>
        <translation>You cannot edit your own permissions.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Объекты</source>
        <translation>Objects</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Поиск</source>
        <translation>Search</translation>
    </message>
    <message>
        <location line="+25"/>
        <source>Выбрать все</source>
        <translation>Select all</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Снять все</source>
        <translation>Clear all</translation>
    </message>
    <message>
        <location filename="../src/userpermissions.cpp" line="+99"/>
        <source>Подразделения</source>
        <translation>Departments</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Объекты доступа</source>
        <translation>Access objects</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Отчеты</source>
        <translation>Reports</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Группы доступа</source>
        <translation>Access groups</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Настройки мониторинга</source>
        <translation>Monitoring settings</translation>
    </message>
    <message>
        <location line="+149"/>
        <source>Сохранение полномочий пользователя %1</source>
        <translation>Saving the permissions of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сохранения полномочий пользователя %1</source>
        <translation>Failed to save the permissions of user %1</translation>
    </message>
</context>
<context>
    <name>UserPermissionsWizardPage</name>
    <message>
        <location filename="../src/wizards/userpermissionswizardpage.ui" line="+14"/>
        <source>WizardPage</source>
        <translation>Wizard page</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Полномочия</source>
        <translation>Permissions</translation>
    </message>
    <message>
        <location filename="../src/wizards/userpermissionswizardpage.cpp" line="+45"/>
        <source>Сохранение полномочий на &apos;%1&apos; для пользователя</source>
        <translation>Saving &apos;%1&apos; permissions for the user</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сохранения полномочий на &apos;%1&apos; для пользователя</source>
        <translation>Failed to save &apos;%1&apos; permissions for the user</translation>
    </message>
</context>
<context>
    <name>UserProgressWizardPage</name>
    <message>
        <location filename="../src/wizards/userprogresswizardpage.cpp" line="+20"/>
        <source>Сохранение</source>
        <translation>Saving</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Пользователь не прошел верификацию для создания нового пользователя.</source>
        <translation>The user failed the verification required to create a new user.</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Подтвердить</source>
        <translation>Confirm</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отклонить</source>
        <translation>Decline</translation>
    </message>
    <message>
        <location line="+61"/>
        <source>Пользователь «%1» создан, но настроен не полностью. Завершите настройку в его свойствах или удалите его.</source>
        <translation>User “%1” was created but not fully set up. Finish the setup in the user&apos;s properties or delete the user.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Пользователь не создан.</source>
        <translation>The user was not created.</translation>
    </message>
</context>
<context>
    <name>UserProperties</name>
    <message>
        <location filename="../src/userproperties.ui" line="+20"/>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Идентификация</source>
        <translation>Identification</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Политика идентификации</source>
        <translation>Identification policy</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Срок действия пароля</source>
        <translation>Password expiry</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Личная информация</source>
        <translation>Personal information</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Логин</source>
        <translation>Login</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Фамилия</source>
        <translation>Last name</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Имя</source>
        <translation>First name</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Отчество</source>
        <translation>Middle name</translation>
    </message>
    <message>
        <location line="+74"/>
        <source>Внимание! Пользователь не имеет шаблонов: вход по биометрической информации невозможен.</source>
        <translation>Warning! The user has no biometric templates: biometric login is not possible.</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>Сменить пароль</source>
        <translation>Change password</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Сбросить пароль</source>
        <translation>Reset password</translation>
    </message>
    <message>
        <location filename="../src/userproperties.cpp" line="+172"/>
        <source>Сохранение параметров пользователя %1</source>
        <translation>Saving the settings of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сохранения параметров пользователя %1</source>
        <translation>Failed to save the settings of user %1</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Ошибка сохранения параметров пользователя</source>
        <translation>Failed to save the user settings</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Параметры пользователя сохранены</source>
        <translation>User settings saved</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Ошибка сброса пароля</source>
        <translation>Failed to reset the password</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Пароль пользователя %1 сброшен на пароль по умолчанию</source>
        <translation>Password of user %1 reset to the default password</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Ошибка установки пароля</source>
        <translation>Failed to set the password</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Пароль пользователя %1 установлен</source>
        <translation>Password set for user %1</translation>
    </message>
    <message>
        <location line="+28"/>
        <source>Сброс пароля</source>
        <translation>Reset Password</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Сбросить пароль для пользователя %1?</source>
        <translation>Reset the password of user %1?</translation>
    </message>
    <message>
        <location line="+27"/>
        <source>Сброс пароля пользователя %1</source>
        <translation>Resetting the password of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сброса пароля пользователя %1</source>
        <translation>Failed to reset the password of user %1</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Установка пароля пользователя %1</source>
        <translation>Setting the password of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка установки пароля пользователя %1</source>
        <translation>Failed to set the password of user %1</translation>
    </message>
</context>
<context>
    <name>UserPropertiesDialog</name>
    <message>
        <location filename="../src/userpropertiesdialog.cpp" line="+35"/>
        <source>Основное</source>
        <translation>General</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Роли доступа</source>
        <translation>Access roles</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Полномочия</source>
        <translation>Permissions</translation>
    </message>
    <message>
        <location line="+57"/>
        <source>Пользователь %1 удалён в другой сессии. Изменения сохранить нельзя: закройте окно.</source>
        <translation>User %1 was deleted in another session. The changes cannot be saved: close the window.</translation>
    </message>
</context>
<context>
    <name>UserPropertyWizardPage</name>
    <message>
        <location filename="../src/wizards/userpropertywizardpage.ui" line="+14"/>
        <source>WizardPage</source>
        <translation>Wizard page</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Параметры</source>
        <translation>Settings</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Поля, помеченные *, обязательны для заполнения</source>
        <translation>Fields marked * are required</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Логин*</source>
        <translation>Login*</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Проверить</source>
        <translation>Check</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Фамилия</source>
        <translation>Last name</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Имя</source>
        <translation>First name</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Отчество</source>
        <translation>Middle name</translation>
    </message>
    <message>
        <location filename="../src/wizards/userpropertywizardpage.cpp" line="+99"/>
        <source>Добавление пользователя %1</source>
        <translation>Adding user %1</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Ошибка добавления пользователя %1</source>
        <translation>Failed to add user %1</translation>
    </message>
</context>
<context>
    <name>UserRoleInfoWidget</name>
    <message>
        <location filename="../src/userroleinfowidget.ui" line="+14"/>
        <source>Form</source>
        <translation>Form</translation>
    </message>
</context>
<context>
    <name>UserRoles</name>
    <message>
        <location filename="../src/userroles.ui" line="+14"/>
        <source>Form</source>
        <translation>Form</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Запрещено редактирование своих ролей.</source>
        <translation>You cannot edit your own roles.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Отсутствуют права &quot;Управление ролями пользователей&quot;</source>
        <translation>Missing the &quot;Manage user roles&quot; permission</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Шаблон</source>
        <translation>Template</translation>
    </message>
    <message>
        <location filename="../src/userroles.cpp" line="+173"/>
        <source>Сохранение параметров пользователя %1</source>
        <translation>Saving the settings of user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка сохранения параметров пользователя %1</source>
        <translation>Failed to save the settings of user %1</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Изменение параметров пользователя</source>
        <translation>Changing the user settings</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка изменения параметров пользователя</source>
        <translation>Failed to change the user settings</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Ошибка сохранения параметров пользователя</source>
        <translation>Failed to save the user settings</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Параметры пользователя сохранены</source>
        <translation>User settings saved</translation>
    </message>
</context>
<context>
    <name>UserRolesWizardPage</name>
    <message>
        <location filename="../src/wizards/userroleswizardpage.ui" line="+19"/>
        <source>WizardPage</source>
        <translation>Wizard page</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Доступ</source>
        <translation>Access</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Политика идентификации</source>
        <translation>Identification policy</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Шаблон</source>
        <translation>Template</translation>
    </message>
    <message>
        <location line="+63"/>
        <source>Внимание! Пользователь не имеет шаблонов: вход по биометрической информации невозможен.</source>
        <translation>Warning! The user has no biometric templates: biometric login is not possible.</translation>
    </message>
    <message>
        <location filename="../src/wizards/userroleswizardpage.cpp" line="+81"/>
        <source>Изменение ролей пользователя %1</source>
        <translation>Changing the roles of user %1</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Ошибка изменения ролей пользователя %1</source>
        <translation>Failed to change the roles of user %1</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Применение параметров роли пользователя</source>
        <translation>Applying the user&apos;s role settings</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка применения параметров роли пользователя</source>
        <translation>Failed to apply the user&apos;s role settings</translation>
    </message>
</context>
<context>
    <name>UsersItemDelegate</name>
    <message>
        <location filename="../src/usersitemdelegate.cpp" line="+112"/>
        <source>Заблокирован</source>
        <translation>Blocked</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Истек срок действия пароля</source>
        <translation>Password expired</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Необходимо сменить пароль</source>
        <translation>Password change required</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Пароль установлен</source>
        <translation>Password set</translation>
    </message>
    <message>
        <location line="+25"/>
        <source>%1 %2 %3</source>
        <translation>%1 %2 %3</translation>
    </message>
</context>
<context>
    <name>ZRGlobals</name>
    <message>
        <location filename="../src/roletemplatechoices.cpp" line="+19"/>
        <source>Супервизор</source>
        <translation>Supervisor</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Администратор</source>
        <translation>Administrator</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Мобильный сотрудник</source>
        <translation>Mobile employee</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Мобильный руководитель</source>
        <translation>Mobile manager</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Оператор</source>
        <translation>Operator</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Служба охраны</source>
        <translation>Security</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отдел кадров</source>
        <translation>Human Resources</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Аудитор</source>
        <translation>Auditor</translation>
    </message>
</context>
</TS>
