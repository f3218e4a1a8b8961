<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>AuthorizationWidget</name>
    <message>
        <location filename="../host/gui/biometrics/authorizationwidget.cpp" line="+103"/>
        <source>Опознаны:</source>
        <translation>Identified:</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Кто может подтвердить:</source>
        <translation>Who can confirm:</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Ожидание данных для проверки…</source>
        <translation>Waiting for data to check…</translation>
    </message>
    <message>
        <location line="+82"/>
        <location line="+40"/>
        <source>Приложите палец к сканеру.</source>
        <translation>Place your finger on the reader.</translation>
    </message>
    <message>
        <location line="-4"/>
        <source>Подтвердить изменение некому: нет сохраненных отпечатков пальцев пользователей с правом подтверждения.</source>
        <translation>Nobody can confirm the change: no user allowed to confirm has a stored fingerprint.</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Отпечаток не распознан. Приложите палец еще раз.</source>
        <translation>Fingerprint not recognised. Place your finger again.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>%1 уже опознан. Нужен отпечаток другого человека.</source>
        <translation>%1 is already identified. Another person&apos;s fingerprint is needed.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>%1 — нет права подтверждения</source>
        <translation>%1 — not allowed to confirm</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Изменение подтверждено.</source>
        <translation>Change confirmed.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 опознан. Нужно подтверждение еще одного человека.</source>
        <translation>%1 identified. One more person must confirm.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 не имеет права подтверждать это изменение.</source>
        <translation>%1 is not allowed to confirm this change.</translation>
    </message>
    <message>
        <location line="+86"/>
        <source>%1 — подтверждений %2 из %3</source>
        <translation>%1 — %2 of %3 confirmations</translation>
    </message>
</context>
<context>
    <name>BaseProgressWizardPage</name>
    <message>
        <location filename="../host/gui/wizards/baseprogresswizardpage.cpp" line="+40"/>
        <source>Задачи будут выполнены при переходе на эту страницу.</source>
        <translation>The tasks will run when you reach this page.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>%v из %m</source>
        <translation>%v of %m</translation>
    </message>
    <message>
        <location line="+49"/>
        <source>Нет задач для выполнения.</source>
        <translation>There are no tasks to run.</translation>
    </message>
    <message>
        <location line="+38"/>
        <source>Готово. Выполнено задач: %1.</source>
        <translation>Done. Tasks completed: %1.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Готово, но с ошибками. Выполнено задач: %1, с ошибкой: %2.</source>
        <translation>Done with errors. Tasks completed: %1, failed: %2.</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Задача «%1»</source>
        <translation>Task &quot;%1&quot;</translation>
    </message>
    <message>
        <location line="+31"/>
        <source>Ошибка: %1</source>
        <translation>Error: %1</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Не выполнено задач: %1</source>
        <translation>Tasks not run: %1</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Выполнение остановлено: задача «%1» завершилась с ошибкой. Успешно выполнено задач: %2 из %3.</source>
        <translation>Stopped: task &quot;%1&quot; failed. Tasks completed successfully: %2 of %3.</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Пропущено задач этого объекта: %1</source>
        <translation>Tasks of this object skipped: %1</translation>
    </message>
    <message>
        <location line="+91"/>
        <source>Выполняется задача %1 из %2…</source>
        <translation>Running task %1 of %2…</translation>
    </message>
</context>
<context>
    <name>DeleteObjectWizard</name>
    <message>
        <location filename="../host/gui/wizards/deleteobjectwizard.cpp" line="+30"/>
        <source>Мастер удаления</source>
        <translation>Deletion Wizard</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Удаляемые объекты</source>
        <translation>Objects to delete</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Объекты</source>
        <translation>Objects</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Удаление нельзя отменить.</source>
        <translation>Deletion cannot be undone.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Удаление</source>
        <translation>Deletion</translation>
    </message>
    <message>
        <location line="+22"/>
        <source>Объект №%1</source>
        <translation>Object no. %1</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Будут удалены объекты (%1):</source>
        <translation>These objects will be deleted (%1):</translation>
    </message>
    <message>
        <location line="+68"/>
        <source>Удаление пользователя %1</source>
        <translation>Deleting user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Удаление объекта «%1»</source>
        <translation>Deleting object &quot;%1&quot;</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка удаления пользователя %1</source>
        <translation>Failed to delete user %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Ошибка удаления объекта «%1»</source>
        <translation>Failed to delete object &quot;%1&quot;</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Далее &gt;</source>
        <translation>Next &gt;</translation>
    </message>
    <message>
        <location line="+0"/>
        <location line="+2"/>
        <source>Удалить</source>
        <translation>Delete</translation>
    </message>
</context>
<context>
    <name>DeleteVerifyWizardPage</name>
    <message>
        <location filename="../host/gui/wizards/deleteverifywizardpage.cpp" line="+12"/>
        <source>Подтверждение</source>
        <translation>Confirmation</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Удаление нужно подтвердить отпечатком пальца пользователя, который имеет на это право.</source>
        <translation>The deletion must be confirmed with the fingerprint of a user who is allowed to do so.</translation>
    </message>
</context>
<context>
    <name>FingerprintOwner</name>
    <message>
        <location filename="../host/gui/biometrics/fingerprintowner.cpp" line="+16"/>
        <source>Пользователь №%1</source>
        <translation>User no. %1</translation>
    </message>
</context>
<context>
    <name>FingerprintReader</name>
    <message>
        <location filename="../host/gui/biometrics/fingerprintreader.cpp" line="+22"/>
        <source>имитация</source>
        <translation>simulated</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>сканер</source>
        <translation>reader</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>формат %1</source>
        <translation>format %1</translation>
    </message>
</context>
<context>
    <name>FingerprintReaderFactory</name>
    <message>
        <location filename="../host/gui/biometrics/fingerprintreaderfactory.cpp" line="+49"/>
        <source>Сканер отпечатков не найден.</source>
        <translation>No fingerprint reader found.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>%1 Отпечатки читаются имитацией сканера.</source>
        <translation>%1 Fingerprints are read by the simulated reader.</translation>
    </message>
</context>
<context>
    <name>HiddenPanel</name>
    <message>
        <location filename="../host/gui/widgets/hiddenpanel.cpp" line="+32"/>
        <source>Свернуть или развернуть панель</source>
        <translation>Collapse or expand the panel</translation>
    </message>
</context>
<context>
    <name>LibfprintReader</name>
    <message>
        <location filename="../host/gui/biometrics/libfprintreader.cpp" line="+80"/>
        <source>Сканер отпечатков</source>
        <translation>Fingerprint reader</translation>
    </message>
    <message>
        <location line="+13"/>
        <location line="+42"/>
        <source>Сканер отпечатков не подключен.</source>
        <translation>The fingerprint reader is not connected.</translation>
    </message>
    <message>
        <location line="-38"/>
        <source>Нет отпечатков, снятых этим сканером, у тех, кто может подтвердить изменение.</source>
        <translation>Nobody who can confirm the change has a fingerprint taken with this reader.</translation>
    </message>
    <message>
        <location line="+50"/>
        <location line="+278"/>
        <source>Сканер отпечатков занят: с ним работает другая программа или другое окно. Закройте его там и повторите.</source>
        <translation>The fingerprint reader is busy: another program or window is using it. Close it there and try again.</translation>
    </message>
    <message>
        <location line="-200"/>
        <source>Отпечаток снят %1 из %2 раз. Приложите палец еще раз.</source>
        <translation>Fingerprint taken %1 of %2 times. Place your finger again.</translation>
    </message>
    <message>
        <location line="+186"/>
        <source>Сканер отпечатков не ответил.</source>
        <translation>The fingerprint reader did not answer.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Сканер отпечатков отключен. Подключите его и повторите.</source>
        <translation>The fingerprint reader is disconnected. Connect it and try again.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>Сканер отпечатков занят другой программой. Закройте ее и повторите.</source>
        <translation>The fingerprint reader is busy with another program. Close it and try again.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Сканер отпечатков сообщил об ошибке: %1</source>
        <translation>The fingerprint reader reported an error: %1</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Палец убран слишком быстро. Приложите его еще раз.</source>
        <translation>The finger was removed too quickly. Place it again.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Приложите палец по центру сканера.</source>
        <translation>Place your finger in the centre of the reader.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Уберите палец и приложите его еще раз.</source>
        <translation>Lift your finger and place it again.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Отпечаток не прочитан. Приложите палец еще раз.</source>
        <translation>The fingerprint could not be read. Place your finger again.</translation>
    </message>
</context>
<context>
    <name>LocalStorageLoader</name>
    <message>
        <location filename="../host/core/localstorageloader.cpp" line="+107"/>
        <source>Сервер прислал нечитаемый каталог ролей</source>
        <translation>The server sent an unreadable role catalogue</translation>
    </message>
    <message>
        <location line="+37"/>
        <source>Сервер прислал нечитаемые данные набора «%1»</source>
        <translation>The server sent unreadable data for &quot;%1&quot;</translation>
    </message>
    <message>
        <location line="+72"/>
        <source>Не удалось загрузить данные</source>
        <translation>Could not load the data</translation>
    </message>
</context>
<context>
    <name>LoginClient</name>
    <message>
        <location filename="../host/core/loginclient.cpp" line="+63"/>
        <source>Сервер прислал нечитаемый ответ на вход</source>
        <translation>The server sent an unreadable answer to the login</translation>
    </message>
    <message>
        <location line="+30"/>
        <source>Сервер прислал нечитаемый ответ на смену пароля</source>
        <translation>The server sent an unreadable answer to the password change</translation>
    </message>
    <message>
        <location line="+77"/>
        <source>Не удалось восстановить сессию</source>
        <translation>Could not resume the session</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>Сессия закрыта сервером</source>
        <translation>The server closed the session</translation>
    </message>
</context>
<context>
    <name>PageListWizard</name>
    <message>
        <location filename="../host/gui/wizards/pagelistwizard.cpp" line="+17"/>
        <source>&lt; Назад</source>
        <translation>&lt; Back</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Далее &gt;</source>
        <translation>Next &gt;</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Готово</source>
        <translation>Finish</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Отмена</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <location line="+41"/>
        <source>Шаг %1</source>
        <translation>Step %1</translation>
    </message>
    <message>
        <location line="+68"/>
        <source>текущий шаг</source>
        <translation>current step</translation>
    </message>
</context>
<context>
    <name>PasswordChangeWidget</name>
    <message>
        <location filename="../host/gui/widgets/passwordchangewidget.cpp" line="+42"/>
        <source>Сгенерировать</source>
        <translation>Generate</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Создать случайный пароль, отвечающий требованиям</source>
        <translation>Create a random password that meets the requirements</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Показать пароль</source>
        <translation>Show password</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Новый пароль:</source>
        <translation>New password:</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Подтверждение:</source>
        <translation>Confirm password:</translation>
    </message>
    <message numerus="yes">
        <location line="+152"/>
        <source>Не менее %n символов</source>
        <translation>
            <numerusform>At least %n character</numerusform>
            <numerusform>At least %n characters</numerusform>
        </translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Заглавная буква</source>
        <translation>An upper-case letter</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Строчная буква</source>
        <translation>A lower-case letter</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Цифра</source>
        <translation>A digit</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Специальный символ (!, #, % ...)</source>
        <translation>A special character (!, #, % ...)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Пароли совпадают</source>
        <translation>Passwords match</translation>
    </message>
</context>
<context>
    <name>PasswordCriteriaPanel</name>
    <message>
        <location filename="../host/gui/widgets/passwordcriteriapanel.cpp" line="+26"/>
        <source>Требования к паролю</source>
        <translation>Password requirements</translation>
    </message>
</context>
<context>
    <name>PluginWidget</name>
    <message>
        <location filename="../host/gui/widgets/pluginwidget.cpp" line="+57"/>
        <source>Щелкните, чтобы закрыть</source>
        <translation>Click to close</translation>
    </message>
</context>
<context>
    <name>SearchWidget</name>
    <message>
        <location filename="../host/gui/widgets/searchwidget.cpp" line="+14"/>
        <source>Поиск</source>
        <translation>Search</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Очистить</source>
        <translation>Clear</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Расширенный поиск</source>
        <translation>Advanced search</translation>
    </message>
</context>
<context>
    <name>SimulatedFingerprintPanel</name>
    <message>
        <location filename="../host/gui/biometrics/simulatedfingerprintpanel.cpp" line="+20"/>
        <source>Приложить палец</source>
        <translation>Place finger</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Незнакомый палец</source>
        <translation>Unknown finger</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>&lt;b&gt;Имитация сканера.&lt;/b&gt; Сканер отпечатков не подключен.</source>
        <translation>&lt;b&gt;Simulated reader.&lt;/b&gt; No fingerprint reader is connected.</translation>
    </message>
    <message>
        <location line="+18"/>
        <source>Чей палец приложить:</source>
        <translation>Whose finger to place:</translation>
    </message>
    <message>
        <location line="+50"/>
        <source>%1, палец %2</source>
        <translation>%1, finger %2</translation>
    </message>
</context>
<context>
    <name>SimulatedFingerprintReader</name>
    <message>
        <location filename="../host/gui/biometrics/simulatedfingerprintreader.cpp" line="+43"/>
        <source>Имитация сканера отпечатков</source>
        <translation>Simulated fingerprint reader</translation>
    </message>
</context>
<context>
    <name>TabbedDialog</name>
    <message>
        <location filename="../host/gui/dialogs/tabbeddialog.cpp" line="+34"/>
        <source>Закрыть</source>
        <translation>Close</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Сохранить</source>
        <translation>Save</translation>
    </message>
</context>
<context>
    <name>ValidatingDialog</name>
    <message>
        <location filename="../host/gui/dialogs/validatingdialog.cpp" line="+46"/>
        <source>Поле заполнено неверно. Исправьте выделенное значение.</source>
        <translation>A field is filled in wrongly. Correct the highlighted value.</translation>
    </message>
</context>
<context>
    <name>ZRDateEdit</name>
    <message>
        <location filename="../host/gui/widgets/zrdateedit.cpp" line="+31"/>
        <source>Дата уже прошла</source>
        <translation>The date has passed</translation>
    </message>
</context>
<context>
    <name>ZRGlobals</name>
    <message>
        <location filename="../host/core/zrglobals.cpp" line="+41"/>
        <source>Супервизор</source>
        <translation>Supervisor</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Администратор</source>
        <translation>Administrator</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Мобильный сотрудник</source>
        <translation>Mobile employee</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Мобильный руководитель</source>
        <translation>Mobile manager</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Оператор</source>
        <translation>Operator</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Служба охраны</source>
        <translation>Security</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Отдел кадров</source>
        <translation>Human resources</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Аудитор</source>
        <translation>Auditor</translation>
    </message>
</context>
<context>
    <name>ZRPluginInterface</name>
    <message>
        <location filename="../host/core/zrplugininterface.cpp" line="+141"/>
        <source>Нет соединения с сервером</source>
        <translation>No connection to the server</translation>
    </message>
</context>
<context>
    <name>ZRServerInterface</name>
    <message>
        <location filename="../host/core/zrserverinterface.cpp" line="+16"/>
        <source>Нет соединения с сервером</source>
        <translation>No connection to the server</translation>
    </message>
    <message>
        <location line="+52"/>
        <source>Соединение закрыто</source>
        <translation>The connection is closed</translation>
    </message>
    <message>
        <location line="+218"/>
        <source>Не удалось установить защищённое соединение с сервером %1:%2 (%3). Проверьте, что сервер работает с TLS, и что его сертификат указан как доверенный.</source>
        <translation>Could not set up a secure connection to server %1:%2 (%3). Check that the server uses TLS and that its certificate is trusted.</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Сервер закрыл соединение</source>
        <translation>The server closed the connection</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Сервер прислал повреждённые данные</source>
        <translation>The server sent corrupted data</translation>
    </message>
</context>
<context>
    <name>ZRTableView</name>
    <message>
        <location filename="../host/gui/widgets/zrtableview.cpp" line="+204"/>
        <source>Столбец %1</source>
        <translation>Column %1</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>Столбцы по умолчанию</source>
        <translation>Default columns</translation>
    </message>
</context>
</TS>
