<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>AuditLogModel</name>
    <message>
        <location filename="../app/screens/auditlogmodel.cpp" line="+32"/>
        <source>Вход в систему</source>
        <translation>Log in</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Возобновление сессии</source>
        <translation>Resume session</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Смена своего пароля</source>
        <translation>Change own password</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Создание объекта</source>
        <translation>Create object</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Изменение объекта</source>
        <translation>Change object</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Удаление объекта</source>
        <translation>Delete object</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Назначение шаблона ролей</source>
        <translation>Assign role template</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Добавление прав</source>
        <translation>Grant permissions</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Изменение прав</source>
        <translation>Change permissions</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Запись отпечатка</source>
        <translation>Enrol fingerprint</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Удаление отпечатка</source>
        <translation>Delete fingerprint</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отключение сессий</source>
        <translation>Disconnect sessions</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Снятие блокировки входа</source>
        <translation>Unlock login</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отправка письма</source>
        <translation>Send mail</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Запрос SQL</source>
        <translation>SQL query</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Чтение журнала действий</source>
        <translation>Read audit log</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Указание подтверждающего</source>
        <translation>Set confirmer</translation>
    </message>
    <message>
        <location line="+100"/>
        <source>Выполнено</source>
        <translation>Done</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Отказано (код %1)</source>
        <translation>Refused (code %1)</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>%1 UTC</source>
        <translation>%1 UTC</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Объект № %1</source>
        <translation>Object no. %1</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Время</source>
        <translation>Time</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Оператор</source>
        <translation>Operator</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Адрес</source>
        <translation>Address</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Действие</source>
        <translation>Action</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Объект</source>
        <translation>Object</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Результат</source>
        <translation>Result</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Подтвердил</source>
        <translation>Confirmed by</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Подробности</source>
        <translation>Details</translation>
    </message>
    <message>
        <location line="+40"/>
        <source>Нет соединения с сервером: журнал действий не прочитан.</source>
        <translation>No connection to the server: the audit log was not read.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Сервер прислал нечитаемую страницу журнала действий.</source>
        <translation>The server sent an unreadable page of the audit log.</translation>
    </message>
</context>
<context>
    <name>AuditLogScreen</name>
    <message>
        <location filename="../app/screens/auditlogscreen.cpp" line="+34"/>
        <source>с</source>
        <translation>from</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>до</source>
        <translation>to</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Найти</source>
        <translation>Search</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Экспорт в CSV…</source>
        <translation>Export to CSV…</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Логин оператора</source>
        <translation>Operator login</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Объект: часть имени или номер</source>
        <translation>Object: part of the name or number</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Все действия</source>
        <translation>All actions</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Все результаты</source>
        <translation>All results</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Выполненные</source>
        <translation>Succeeded</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отказы</source>
        <translation>Refused</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Конец периода, не включая его</source>
        <translation>End of the period, not included</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Сохранить строки журнала, выбранные фильтром, в файл CSV</source>
        <translation>Save the log rows matching the filter to a CSV file</translation>
    </message>
    <message>
        <location line="+83"/>
        <source>Журнал действий</source>
        <translation>Audit log</translation>
    </message>
    <message>
        <location line="+38"/>
        <source>Начало периода должно быть раньше его конца. Исправьте даты.</source>
        <translation>The start of the period must be before its end. Correct the dates.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Экспорт журнала действий</source>
        <translation>Export audit log</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>журнал-действий-%1.csv</source>
        <translation>audit-log-%1.csv</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Файлы CSV (*.csv)</source>
        <translation>CSV files (*.csv)</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Чтение журнала для экспорта…</source>
        <translation>Reading the log for export…</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Журнал не прочитан целиком, файл %1 не сохранён. Повторите экспорт.</source>
        <translation>The log was not read completely; file %1 was not saved. Export again.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Не удалось сохранить файл %1: %2. Выберите другое место.</source>
        <translation>Could not save file %1: %2. Choose another location.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Сохранено строк: %1, файл %2.</source>
        <translation>Rows saved: %1, file %2.</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Чтение журнала…</source>
        <translation>Reading the log…</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Показано строк: %1; прокрутите вниз, чтобы прочитать более старые.</source>
        <translation>Rows shown: %1; scroll down to read older ones.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Показано строк: %1, это все строки фильтра.</source>
        <translation>Rows shown: %1; these are all rows matching the filter.</translation>
    </message>
</context>
<context>
    <name>EmbeddedServer</name>
    <message>
        <location filename="../app/startup/embeddedserver.cpp" line="+30"/>
        <source>Не удалось создать папку %1 для базы данных. Проверьте права на неё или укажите другой файл параметром --db.</source>
        <translation>Could not create folder %1 for the database. Check its permissions or give another file with --db.</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>База данных %1 уже открыта другой студией или сервером на этом компьютере. Подключитесь к нему: zr-studio --server 127.0.0.1:%2, или укажите другой файл параметром --db.</source>
        <translation>Database %1 is already open in another studio or server on this computer. Connect to it with zr-studio --server 127.0.0.1:%2, or give another file with --db.</translation>
    </message>
</context>
<context>
    <name>EmployeeCard</name>
    <message>
        <location filename="../app/screens/employeecard.cpp" line="+45"/>
        <source>Выберите сотрудника, чтобы увидеть его карточку.</source>
        <translation>Select an employee to see their card.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Уволен</source>
        <translation>Dismissed</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Подразделение</source>
        <translation>Department</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Должность</source>
        <translation>Position</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Табельный номер</source>
        <translation>Personnel number</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Электронная почта</source>
        <translation>Email</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Учетная запись</source>
        <translation>Account</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>нет</source>
        <translation>none</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>не указано</source>
        <translation>not set</translation>
    </message>
</context>
<context>
    <name>EmployeesScreen</name>
    <message>
        <location filename="../app/screens/employeesscreen.cpp" line="+53"/>
        <source>Создать мобильных пользователей</source>
        <translation>Create mobile users</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Мобильный пользователь</source>
        <translation>Mobile user</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Организация</source>
        <translation>Organisation</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Создать учетные записи мобильного приложения для выбранных сотрудников</source>
        <translation>Create mobile app accounts for the selected employees</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Открыть учетную запись, связанную с выбранным сотрудником</source>
        <translation>Open the account linked to the selected employee</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Поиск сотрудника</source>
        <translation>Find employee</translation>
    </message>
    <message>
        <location line="+56"/>
        <source>Сотрудники</source>
        <translation>Employees</translation>
    </message>
    <message>
        <location line="+74"/>
        <source>Экран пользователей недоступен: модуль пользователей не загружен в студию. Проверьте, что он установлен в папке модулей, и перезапустите студию.</source>
        <translation>The users screen is not available: the users module is not loaded into the studio. Check that it is installed in the modules folder and restart the studio.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Экран пользователей не открылся: %1</source>
        <translation>The users screen did not open: %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>ошибка %1</source>
        <translation>error %1</translation>
    </message>
</context>
<context>
    <name>FingerprintClient</name>
    <message>
        <location filename="../app/screens/fingerprintclient.cpp" line="+48"/>
        <source>Сервер прислал нечитаемый список пальцев.</source>
        <translation>The server sent an unreadable list of fingers.</translation>
    </message>
    <message>
        <location line="+37"/>
        <source>Нет соединения с сервером.</source>
        <translation>No connection to the server.</translation>
    </message>
</context>
<context>
    <name>FingerprintEnrolmentDialog</name>
    <message>
        <location filename="../app/screens/fingerprintenrolmentdialog.ui" line="+14"/>
        <source>Отпечатки пальцев</source>
        <translation>Fingerprints</translation>
    </message>
    <message>
        <location line="+30"/>
        <source>Палец</source>
        <translation>Finger</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Отпечаток</source>
        <translation>Fingerprint</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Сканировать</source>
        <translation>Scan</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Прервать</source>
        <translation>Stop</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
    <message>
        <location line="+21"/>
        <source>Сканер</source>
        <translation>Reader</translation>
    </message>
    <message>
        <location filename="../app/screens/fingerprintenrolmentdialog.cpp" line="+32"/>
        <source>Отпечатки пальцев: %1</source>
        <translation>Fingerprints: %1</translation>
    </message>
    <message>
        <location line="+102"/>
        <source>Правый большой</source>
        <translation>Right thumb</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Правый указательный</source>
        <translation>Right index finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Правый средний</source>
        <translation>Right middle finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Правый безымянный</source>
        <translation>Right ring finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Правый мизинец</source>
        <translation>Right little finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Левый большой</source>
        <translation>Left thumb</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Левый указательный</source>
        <translation>Left index finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Левый средний</source>
        <translation>Left middle finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Левый безымянный</source>
        <translation>Left ring finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Левый мизинец</source>
        <translation>Left little finger</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Палец №%1</source>
        <translation>Finger no. %1</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Загрузка сведений об отпечатках...</source>
        <translation>Loading fingerprint details...</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Выберите палец и нажмите «Сканировать».</source>
        <translation>Choose a finger and click &quot;Scan&quot;.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Не удалось узнать, какие отпечатки сохранены</source>
        <translation>Could not find out which fingerprints are stored</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Сканер не запустился. Проверьте его подключение и повторите.</source>
        <translation>The reader did not start. Check that it is connected and try again.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Приложите палец «%1» к сканеру.</source>
        <translation>Place the finger &quot;%1&quot; on the reader.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Сканирование прервано.</source>
        <translation>Scanning stopped.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Сохранение отпечатка пальца «%1»...</source>
        <translation>Saving the fingerprint of &quot;%1&quot;...</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Отпечаток не сохранен</source>
        <translation>Fingerprint not saved</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Отпечаток пальца «%1» сохранен.</source>
        <translation>Fingerprint of &quot;%1&quot; saved.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Ошибка сканера: %1</source>
        <translation>Reader error: %1</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Ошибка сканера: %1 Отпечаток можно снять имитацией сканера: нажмите «Сканировать» еще раз.</source>
        <translation>Reader error: %1 The fingerprint can be taken with the simulated reader: click &quot;Scan&quot; again.</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Удалить отпечаток пальца «%1»? Пользователь не сможет проходить по нему.</source>
        <translation>Delete the fingerprint of &quot;%1&quot;? The user will no longer be able to pass with it.</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Удаление отпечатка пальца «%1»...</source>
        <translation>Deleting the fingerprint of &quot;%1&quot;...</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Отпечаток не удален</source>
        <translation>Fingerprint not deleted</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Отпечаток пальца «%1» удален.</source>
        <translation>Fingerprint of &quot;%1&quot; deleted.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>неизвестно</source>
        <translation>unknown</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>сохранен</source>
        <translation>stored</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>сохранен (%1)</source>
        <translation>stored (%1)</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>нет</source>
        <translation>none</translation>
    </message>
    <message>
        <location line="+31"/>
        <source>%1: у вас нет права изменять биометрические данные. Попросите администратора системы выдать это право.</source>
        <translation>%1: you are not allowed to change biometric data. Ask the system administrator to grant this permission.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>%1: нет связи с сервером. Дождитесь восстановления связи и повторите.</source>
        <translation>%1: no connection to the server. Wait until the connection is restored and try again.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>%1: пользователь или отпечаток не найден на сервере. Возможно, их только что удалили; закройте окно и откройте его снова.</source>
        <translation>%1: the user or fingerprint was not found on the server. It may have just been deleted; close the window and open it again.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1: сервер ответил ошибкой %2. Повторите позже.</source>
        <translation>%1: the server answered with error %2. Try again later.</translation>
    </message>
</context>
<context>
    <name>FingerprintEnrolmentService</name>
    <message>
        <location filename="../app/screens/fingerprintenrolmentservice.cpp" line="+58"/>
        <source>Запрос на ввод отпечатков не прочитан.</source>
        <translation>The fingerprint enrolment request could not be read.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>У вас нет права изменять биометрические данные. Обратитесь к администратору.</source>
        <translation>You are not allowed to change biometric data. Contact your administrator.</translation>
    </message>
</context>
<context>
    <name>LoginDialog</name>
    <message>
        <location filename="../app/startup/logindialog.ui" line="+9"/>
        <source>Вход в студию Zeral</source>
        <translation>Log in to Zeral Studio</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Студия администрирования Zeral</source>
        <translation>Zeral Administration Studio</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Логин:</source>
        <translation>Login:</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Пароль:</source>
        <translation>Password:</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Сервер:</source>
        <translation>Server:</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Адрес сервера в виде ХОСТ:ПОРТ</source>
        <translation>Server address as HOST:PORT</translation>
    </message>
    <message>
        <location filename="../app/startup/logindialog.cpp" line="+20"/>
        <source>Войти</source>
        <translation>Log In</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Выход</source>
        <translation>Exit</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Сервер, встроенный в эту студию</source>
        <translation>Server built into this studio</translation>
    </message>
</context>
<context>
    <name>LoginLocksDialog</name>
    <message>
        <location filename="../app/window/loginlocksdialog.ui" line="+14"/>
        <source>Заблокированные входы</source>
        <translation>Locked Logins</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>После нескольких неудачных попыток входа сервер на время закрывает вход под этим именем с того адреса, откуда они пришли. С других адресов владелец учётной записи входит как обычно.</source>
        <translation>After several failed login attempts the server locks logins under that name from the address they came from for a while. From other addresses the account owner logs in as usual.</translation>
    </message>
    <message>
        <location line="+37"/>
        <source>Обновить</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Снять блокировку</source>
        <translation>Unlock</translation>
    </message>
    <message>
        <location filename="../app/window/loginlocksdialog.cpp" line="+65"/>
        <source>Не удалось получить список заблокированных входов: %1 Нажмите «Обновить», чтобы повторить.</source>
        <translation>Could not get the list of locked logins: %1 Click &quot;Refresh&quot; to try again.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Сервер прислал нечитаемый список заблокированных входов. Обновите студию до версии сервера.</source>
        <translation>The server sent an unreadable list of locked logins. Update the studio to the server&apos;s version.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Заблокированных входов нет.</source>
        <translation>There are no locked logins.</translation>
    </message>
    <message>
        <location line="+34"/>
        <source>«%1» (%2): %3</source>
        <translation>&quot;%1&quot; (%2): %3</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Снято блокировок: %1. С этих адресов снова можно войти.</source>
        <translation>Locks lifted: %1. Logins from these addresses are possible again.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Не удалось снять блокировку: %1</source>
        <translation>Could not lift the lock: %1</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Нет соединения с сервером.</source>
        <translation>No connection to the server.</translation>
    </message>
</context>
<context>
    <name>LoginLocksModel</name>
    <message>
        <location filename="../app/window/loginlocksmodel.cpp" line="+55"/>
        <source>%1 UTC</source>
        <translation>%1 UTC</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Имя пользователя</source>
        <translation>User name</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Адрес</source>
        <translation>Address</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Неудачных попыток</source>
        <translation>Failed attempts</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Заблокирован до</source>
        <translation>Locked until</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <location filename="../app/window/mainwindow.cpp" line="+47"/>
        <source>Студия Zeral</source>
        <translation>Zeral Studio</translation>
    </message>
    <message>
        <location line="+65"/>
        <source>&amp;Студия</source>
        <translation>&amp;Studio</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Сменить пользователя</source>
        <translation>Switch User</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Заблокированные входы…</source>
        <translation>Locked Logins…</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Выход</source>
        <translation>Exit</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>&amp;Настройки</source>
        <translation>S&amp;ettings</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+43"/>
        <source>Язык интерфейса</source>
        <translation>Interface Language</translation>
    </message>
    <message>
        <location line="-26"/>
        <source>&amp;Справка</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+3"/>
        <source>О студии</source>
        <translation>About Studio</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>&lt;b&gt;Студия Zeral&lt;/b&gt; %1&lt;br&gt;Администрирование системы контроля доступа и учёта рабочего времени.&lt;br&gt;Сервер: %2</source>
        <translation>&lt;b&gt;Zeral Studio&lt;/b&gt; %1&lt;br&gt;Administration of the access control and time attendance system.&lt;br&gt;Server: %2</translation>
    </message>
    <message>
        <location line="+22"/>
        <source>Язык интерфейса сменится при следующем запуске студии. Он определяет тексты студии и стандартных окон, формат дат и язык писем пользователям.</source>
        <translation>The interface language changes the next time the studio starts. It sets the texts of the studio and of standard dialogs, the date format and the language of mails to users.</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Модуль %1 не является экраном студии и пропущен.</source>
        <translation>Module %1 is not a studio screen and was skipped.</translation>
    </message>
    <message>
        <location line="+160"/>
        <source>Оператор: %1</source>
        <translation>Operator: %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Оператор: %1 (%2)</source>
        <translation>Operator: %1 (%2)</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Подключено к серверу %1</source>
        <translation>Connected to server %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Подключение к серверу %1…</source>
        <translation>Connecting to server %1…</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Нет связи с сервером %1, переподключение…</source>
        <translation>No connection to server %1, reconnecting…</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Нет связи с сервером %1</source>
        <translation>No connection to server %1</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>причина не названа</source>
        <translation>no reason given</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>позже</source>
        <translation>later</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Письмо для %1 пока не доставлено: %2. Сервер повторит отправку в %3.</source>
        <translation>The mail to %1 has not been delivered yet: %2. The server will try again at %3.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Письмо для %1 не доставлено: %2. Сервер больше не будет его отправлять: проверьте адрес и почтовый сервер и отправьте письмо снова.</source>
        <translation>The mail to %1 was not delivered: %2. The server will not try again: check the address and the mail server, then send the mail again.</translation>
    </message>
</context>
<context>
    <name>PasswordChangeDialog</name>
    <message>
        <location filename="../app/startup/passwordchangedialog.cpp" line="+17"/>
        <source>Смена пароля</source>
        <translation>Change Password</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Придумайте новый пароль для учётной записи «%1». Старый пароль после смены перестанет действовать.</source>
        <translation>Choose a new password for the account &quot;%1&quot;. The old password stops working after the change.</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Сменить пароль и войти</source>
        <translation>Change Password and Log In</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отмена</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>PluginLoader</name>
    <message>
        <location filename="../app/window/pluginloader.cpp" line="+23"/>
        <source>Папка модулей %1 не найдена: экраны модулей недоступны. Укажите её параметром --plugins.</source>
        <translation>Modules folder %1 not found: the modules&apos; screens are not available. Give it with --plugins.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Файл %1 не является модулем студии и пропущен.</source>
        <translation>File %1 is not a studio module and was skipped.</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Модуль %1 не загружен: %2</source>
        <translation>Module %1 was not loaded: %2</translation>
    </message>
</context>
<context>
    <name>RootPasswordDialog</name>
    <message>
        <location filename="../app/startup/rootpassworddialog.cpp" line="+14"/>
        <source>Пароль администратора</source>
        <translation>Administrator Password</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Это первый запуск с новой базой данных. Задайте пароль учётной записи «root»: она может всё, и без пароля войти в неё нельзя. Запомните пароль или сохраните его в надёжном месте: восстановить его студия не сможет.</source>
        <translation>This is the first start with a new database. Set the password of the &quot;root&quot; account: it can do everything, and nobody can log in to it without a password. Remember the password or keep it in a safe place: the studio cannot recover it.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Задать пароль</source>
        <translation>Set Password</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Выход</source>
        <translation>Exit</translation>
    </message>
</context>
<context>
    <name>StudioController</name>
    <message>
        <location filename="../app/startup/studiocontroller.cpp" line="+46"/>
        <source>роли</source>
        <translation>roles</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>пользователи</source>
        <translation>users</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>сотрудники</source>
        <translation>employees</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>организационная структура</source>
        <translation>organisational structure</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>отчёты</source>
        <translation>reports</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>объекты доступа</source>
        <translation>access objects</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>настройки мониторинга</source>
        <translation>monitoring settings</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>политики доступа</source>
        <translation>access policies</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>настройки системы</source>
        <translation>system settings</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>должности</source>
        <translation>positions</translation>
    </message>
    <message>
        <location line="+99"/>
        <source>Запуск встроенного сервера. Первый запуск с демонстрационными данными займёт до минуты…</source>
        <translation>Starting the built-in server. The first start with demo data takes up to a minute…</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Запуск встроенного сервера…</source>
        <translation>Starting the built-in server…</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Демонстрационная база: войдите как root с паролем %1</source>
        <translation>Demo database: log in as root with the password %1</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Студия Zeral</source>
        <translation>Zeral Studio</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Встроенный сервер не запустился: %1</source>
        <translation>The built-in server did not start: %1</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Сервер не сохранил пароль. Попробуйте ещё раз; если ошибка повторится, проверьте место на диске и права на файл базы.</source>
        <translation>The server did not save the password. Try again; if the error repeats, check the disk space and the permissions of the database file.</translation>
    </message>
    <message>
        <location line="+35"/>
        <source>Адрес сервера «%1» не подходит: укажите его как ХОСТ:ПОРТ, например 127.0.0.1:7700.</source>
        <translation>The server address &quot;%1&quot; is not valid: give it as HOST:PORT, for example 127.0.0.1:7700.</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Подключение к серверу %1…</source>
        <translation>Connecting to server %1…</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Сервер %1 недоступен: %2. Проверьте адрес и что сервер запущен, затем нажмите «Войти» ещё раз.</source>
        <translation>Server %1 is not reachable: %2. Check the address and that the server is running, then click &quot;Log In&quot; again.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Вход…</source>
        <translation>Logging in…</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Студия на %1</source>
        <translation>Studio on %1</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Неверное имя пользователя или пароль.</source>
        <translation>Wrong user name or password.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Учётная запись заблокирована. Обратитесь к администратору.</source>
        <translation>The account is blocked. Contact your administrator.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Вход временно закрыт после нескольких неудачных попыток. Попробуйте позже.</source>
        <translation>Login is temporarily locked after several failed attempts. Try again later.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Связь с сервером %1 прервалась во время входа: %2. Нажмите «Войти» ещё раз.</source>
        <translation>The connection to server %1 broke during login: %2. Click &quot;Log In&quot; again.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Войти не удалось: %1</source>
        <translation>Login failed: %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>ошибка %1</source>
        <translation>error %1</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Нужно сменить пароль…</source>
        <translation>The password must be changed…</translation>
    </message>
    <message>
        <location line="+48"/>
        <source>Пароль не сменён, поэтому войти нельзя. Чтобы войти, введите текущий пароль ещё раз и задайте новый.</source>
        <translation>The password was not changed, so you cannot log in. To log in, enter the current password again and choose a new one.</translation>
    </message>
    <message>
        <location line="+45"/>
        <source>Загрузка данных: %1</source>
        <translation>Loading data: %1</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Связь восстановлена. %1…</source>
        <translation>Connection restored. %1…</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Связь с сервером восстановлена, данные обновлены.</source>
        <translation>The connection to the server is restored and the data are up to date.</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Данные не загрузились: %1. Войдите ещё раз.</source>
        <translation>The data did not load: %1. Log in again.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Данные после восстановления связи не обновились: %1. Чтобы увидеть текущее состояние, войдите заново: «Студия → Сменить пользователя».</source>
        <translation>The data were not refreshed after the connection came back: %1. To see the current state, log in again: &quot;Studio → Switch User&quot;.</translation>
    </message>
    <message>
        <location line="+31"/>
        <source>Для вашей учётной записи нет доступных экранов. Обратитесь к администратору.</source>
        <translation>There are no screens available to your account. Contact your administrator.</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Связь с сервером потеряна: %1. Студия переподключается сама; изменения, отправленные до разрыва, могли не сохраниться.</source>
        <translation>The connection to the server was lost: %1. The studio reconnects on its own; changes sent just before the break may not have been saved.</translation>
    </message>
</context>
<context>
    <name>StudioOptions</name>
    <message>
        <location filename="../app/startup/studiooptions.cpp" line="+12"/>
        <source>Студия администрирования Zeral</source>
        <translation>Zeral Administration Studio</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Подключиться к работающему серверу вместо встроенного.</source>
        <translation>Connect to a running server instead of the built-in one.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Файл базы данных встроенного сервера.</source>
        <translation>Database file of the built-in server.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Демонстрационные данные и пароль.</source>
        <translation>Demo data and password.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Папка с модулями студии.</source>
        <translation>Folder of the studio&apos;s modules.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Почтовый сервер встроенного сервера: smtp://хост:порт или smtps://хост:порт.</source>
        <translation>Mail server of the built-in server: smtp://host:port or smtps://host:port.</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Лишний аргумент: %1</source>
        <translation>Unexpected argument: %1</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Адрес сервера «%1» не подходит: укажите его как ХОСТ:ПОРТ, например 127.0.0.1:7700.</source>
        <translation>The server address &quot;%1&quot; is not valid: give it as HOST:PORT, for example 127.0.0.1:7700.</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>--db, --demo и --smtp относятся к встроенному серверу и не сочетаются с --server.</source>
        <translation>--db, --demo and --smtp apply to the built-in server and cannot be combined with --server.</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Адрес почтового сервера «%1» не подходит: укажите его как smtp://хост:порт или smtps://хост:порт.</source>
        <translation>The mail server address &quot;%1&quot; is not valid: give it as smtp://host:port or smtps://host:port.</translation>
    </message>
</context>
</TS>
