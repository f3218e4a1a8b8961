// The new-user wizard opened from the users screen: its pages, its buttons, the chain of its
// tasks through the screen's queue to the scripted server, the confirmation that can throw
// them all away, and what the operator sees when a step fails.
#include "permissionsfixture.h"
#include "userctlharness.h"
#include "wizardpagefixture.h"

#include <src/userpermissions.h>
#include <src/wizards/newuserwizard.h>
#include <src/wizards/userpermissionswizardpage.h>
#include <src/wizards/userprogresswizardpage.h>
#include <tests/support/modalanswerer.h>

#include <host/core/dbquery.h>
#include <host/gui/widgets/zrcombobox.h>

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeWidget>
#include <QtTest>

using Templates = QMultiHash<TYPE_ID, zeral::TEMPLATE_DATA>;
using wizardpages::md5;

namespace {

constexpr TYPE_ID NewUid = 640;

// The rights every page grants at first, in the order of the pages, as the store of the
// permissions fixture holds them.
const QList<QList<TYPE_ID>> AllRights{
    {permissionsfixture::Root, permissionsfixture::Firm, permissionsfixture::Sales,
     permissionsfixture::SalesEast, permissionsfixture::Stock},
    {permissionsfixture::Reader, permissionsfixture::Desk},
    {permissionsfixture::Timesheet, permissionsfixture::HiddenReport, permissionsfixture::Visits},
    {permissionsfixture::Day},
    {permissionsfixture::Screen, permissionsfixture::Alarms}};

// The requests that change something at the server, by name, in the order sent.
QStringList changesSent(const ScriptedServer &server)
{
    QStringList names;
    for (const Command &command : server.sent()) {
        if (command.name == QLatin1String(command::AddObject)
            || command.name == QLatin1String(command::UpdateObject)
            || command.name == QLatin1String(command::PrescribeRoleTemplate)
            || command.name == QLatin1String(command::AddPermissions))
            names.append(command.name);
    }
    return names;
}

QList<Command> changeRequests(const ScriptedServer &server)
{
    const QStringList names = changesSent(server);
    QList<Command> requests;
    for (const Command &command : server.sent()) {
        if (names.contains(command.name))
            requests.append(command);
    }
    return requests;
}

} // namespace

// The users screen with the objects of the permissions fixture in the store, and the wizard
// it opened.
struct WizardRun
{
    static QStringList roles(const QStringList &extra)
    {
        return UserCtlHarness::allRoles() + extra;
    }

    explicit WizardRun(const QStringList &extraRoles = {})
        : h(roles(extraRoles))
    {
        permissionsfixture::fillStore();
        h.answerTemplates();
        h.server.clearSent();
    }

    void open()
    {
        h.child("actionAddUser")->trigger();
        wizard = h.screen->findChild<NewUserWizard *>();
        QVERIFY(wizard);
        progress = wizard->pages().progressPage;
        QVERIFY(QTest::qWaitForWindowExposed(wizard));
    }

    // Types the login and the surname, keeps the default password, picks "RT_OPERATOR", and
    // goes on by Next up to the last page but one.
    void fillUp(const QString &login = QStringLiteral("petrov"))
    {
        wizardpages::type(wizard->findChild<QLineEdit *>("loginEdit"), login);
        wizardpages::type(wizard->findChild<QLineEdit *>("surnameEdit"), QStringLiteral("Петров"));
        next();
        next();
        QVERIFY(wizard->findChild<ZRComboBox *>("cbRoleTemplate")
                    ->setCurrentData(QStringLiteral("RT_OPERATOR")));
        for (int id = NewUserWizard::RolesPage; id < NewUserWizard::MonitoringPermissionPage; ++id)
            next();
        QCOMPARE(wizard->currentId(), int(NewUserWizard::MonitoringPermissionPage));
    }
    void next()
    {
        const int before = wizard->currentId();
        wizard->button(QWizard::NextButton)->click();
        QCOMPARE(wizard->currentId(), before + 1);
    }

    // Up to the last page, whose run then sends the creation.
    void start(const QString &login = QStringLiteral("petrov"))
    {
        open();
        if (QTest::currentTestFailed())
            return;
        fillUp(login);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(changesSent(h.server).isEmpty());
        next();
    }

    // Answers the change requests that are out in turn, with success, up to `count` of them.
    void answerChanges(int count)
    {
        for (int done = 0; done < count; ++done) {
            QTRY_COMPARE(changesSent(h.server).size(), done + 1);
            const Command request = changeRequests(h.server).at(done);
            if (request.name == QLatin1String(command::AddObject))
                h.server.answerOk(request, ZRDataStream::pack(qint32(NewUid)));
            else
                h.server.answerOk(request);
        }
    }

    QString note() const { return progress->findChild<QLabel *>("noteLabel")->text(); }
    QStringList log() const
    {
        QStringList lines;
        const auto *list = progress->findChild<QListWidget *>("taskLog");
        for (int row = 0; row < list->count(); ++row)
            lines.append(list->item(row)->text());
        return lines;
    }

    UserCtlHarness h;
    QPointer<NewUserWizard> wizard;
    QPointer<UserProgressWizardPage> progress;
};

class TestNewUserWizard : public QObject
{
    Q_OBJECT

private slots:
    void init() { zeral::LocalStorage::instance()->clear(); }
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void pages_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("kind"); // as the editor names its data set
        // clang-format off
        QTest::addRow("0") << 0 << "propertyPage" << "Параметры" << "";
        QTest::addRow("1") << 1 << "passwordPage" << "Пароль" << "";
        QTest::addRow("2") << 2 << "rolesPage" << "Доступ" << "";
        QTest::addRow("3") << 3 << "departmentPermissionsPage" << "Полномочия на подразделения" << "Подразделения";
        QTest::addRow("4") << 4 << "devicePermissionPage" << "Полномочия на объекты доступа" << "Объекты доступа";
        QTest::addRow("5") << 5 << "reportPermissionPage" << "Полномочия на отчеты" << "Отчеты";
        QTest::addRow("6") << 6 << "accessPolicyPermissionPage" << "Полномочия на группы доступа" << "Группы доступа";
        QTest::addRow("7") << 7 << "monitoringPermissionPage" << "Полномочия на настройки мониторинга" << "Настройки мониторинга";
        QTest::addRow("8") << 8 << "progressPage" << "Сохранение" << "";
        // clang-format on
    }
    void pages()
    {
        QFETCH(int, id);
        QFETCH(QString, name);
        QFETCH(QString, title);
        QFETCH(QString, kind);
        WizardRun run;
        run.open();
        if (QTest::currentTestFailed())
            return;
        NewUserWizard *wizard = run.wizard;
        QCOMPARE(wizard->objectName(), QStringLiteral("NewUserWizard"));
        QCOMPARE(wizard->windowTitle(), QStringLiteral("Мастер добавления нового пользователя"));
        QCOMPARE(wizard->windowModality(), Qt::ApplicationModal);
        QVERIFY(wizard->testAttribute(Qt::WA_DeleteOnClose));
        QVERIFY(!wizard->testOption(QWizard::IndependentPages));
        QCOMPARE(wizard->pageIds().size(), 9);
        QWizardPage *page = wizard->page(id);
        QVERIFY(page);
        QCOMPARE(page->objectName(), name);
        QCOMPARE(page->title(), title);
        auto *permissions = qobject_cast<UserPermissionsWizardPage *>(page);
        QCOMPARE(permissions != nullptr, !kind.isEmpty());
        if (permissions) {
            UserPermissions *editor = permissions->permissionsWidget();
            QCOMPARE(editor->getCurrentDatatype(), kind);
            QVERIFY(!editor->isObjectTypeSelectoEnabled());
            // Every object of the kind is granted unless the operator takes it away.
            QSignalSpy made(permissions, &UserPermissionsWizardPage::appendTask);
            QVERIFY(permissions->validatePage());
            QCOMPARE(made.size(), 1);
            QCOMPARE(permissionsfixture::objectsOf(made.first().first().value<zeral::TaskInfo>()),
                     AllRights.at(id - NewUserWizard::DepartmentPermissionsPage));
        }
    }

    void sideListGroupsThePermissionPages()
    {
        WizardRun run;
        run.open();
        if (QTest::currentTestFailed())
            return;
        const QTreeWidget *list = run.wizard->pageListWidget();
        QStringList shown;
        for (int row = 0; row < list->topLevelItemCount(); ++row) {
            const QTreeWidgetItem *item = list->topLevelItem(row);
            QStringList children;
            for (int child = 0; child < item->childCount(); ++child)
                children.append(item->child(child)->text(0));
            shown.append(children.isEmpty() ? item->text(0)
                                            : item->text(0) + ": " + children.join(", "));
        }
        QCOMPARE(shown, (QStringList{"Параметры", "Пароль", "Доступ",
                                     "Полномочия: Полномочия на подразделения, Полномочия на "
                                     "объекты доступа, Полномочия на отчеты, Полномочия на группы "
                                     "доступа, Полномочия на настройки мониторинга",
                                     "Сохранение"}));
    }

    // There is never a way back: a page left has given its tasks already.
    void buttons()
    {
        WizardRun run;
        run.open();
        if (QTest::currentTestFailed())
            return;
        const auto visible = [&run](QWizard::WizardButton which) {
            return run.wizard->button(which)->isVisible();
        };
        wizardpages::type(run.wizard->findChild<QLineEdit *>("loginEdit"), "petrov");
        for (int id = 0; id < NewUserWizard::ProgressPage; ++id) {
            QCOMPARE(run.wizard->currentId(), id);
            QVERIFY2(!visible(QWizard::BackButton), qPrintable(QString::number(id)));
            QVERIFY(visible(QWizard::NextButton));
            QVERIFY(visible(QWizard::CancelButton));
            QVERIFY(!visible(QWizard::FinishButton));
            run.next();
        }
        QVERIFY(!visible(QWizard::BackButton));
        QVERIFY(!visible(QWizard::NextButton));
        QVERIFY(!visible(QWizard::CancelButton));
        QVERIFY(visible(QWizard::FinishButton));
    }

    // The whole chain in the order of the pages, each step on the user the first one made.
    void runsTheChainOnTheCreatedUser()
    {
        WizardRun run;
        run.start();
        if (QTest::currentTestFailed())
            return;
        UserCtlHarness &h = run.h;
        // One at a time: the creation alone is out, and the Finish waits for the run.
        QTRY_COMPARE(changesSent(h.server), QStringList{command::AddObject});
        QVERIFY(!run.wizard->button(QWizard::FinishButton)->isEnabled());
        zeral::ObjectInfo created;
        QList<zeral::_INHERIT_DATA> links;
        unpack(changeRequests(h.server).first().data, created, links);
        QCOMPARE(created.uid, TYPE_ID(0));
        QCOMPARE(created.parameters.value("PT_LOGIN"), QStringLiteral("petrov"));
        QCOMPARE(created.parameters.value("PT_SURNAME"), QStringLiteral("Петров"));

        QSignalSpy finished(run.progress.data(), &BaseProgressWizardPage::runFinished);
        run.answerChanges(9);
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.first().first().toBool(), true);
        QCOMPARE(changesSent(h.server),
                 (QStringList{command::AddObject, command::UpdateObject, command::UpdateObject,
                              command::PrescribeRoleTemplate, command::AddPermissions,
                              command::AddPermissions, command::AddPermissions,
                              command::AddPermissions, command::AddPermissions}));
        const QList<Command> requests = changeRequests(h.server);
        const SavedObject password(requests.at(1));
        QCOMPARE(password.uid, NewUid);
        QVERIFY(password.parameters.contains("PT_PASSHASH"));
        QVERIFY(password.parameters.value("PT_PASSHASH") != md5("Kk739146"));
        const SavedObject access(requests.at(2));
        QCOMPARE(access.uid, NewUid);
        QCOMPARE(access.parameters.value("PT_ROLETEMPLATE"), QStringLiteral("RT_OPERATOR"));
        TYPE_ID prescribed = 0;
        QString roleTemplate;
        unpack(requests.at(3).data, prescribed, roleTemplate);
        QCOMPARE(prescribed, NewUid);
        QCOMPARE(roleTemplate, QStringLiteral("RT_OPERATOR"));
        for (int page = 0; page < AllRights.size(); ++page) {
            QList<zeral::OBJECT_PERMISSION> rights;
            unpack(requests.at(4 + page).data, rights);
            QList<TYPE_ID> objects;
            for (const zeral::OBJECT_PERMISSION &right : qAsConst(rights)) {
                QCOMPARE(right.subject, NewUid);
                objects.append(right.object);
            }
            std::sort(objects.begin(), objects.end());
            QCOMPARE(objects, AllRights.at(page));
        }
        QCOMPARE(run.progress->succeededCount(), 9);
        QVERIFY(run.note().isEmpty());
        QVERIFY(run.wizard->button(QWizard::FinishButton)->isEnabled());

        // The server's push of the new user, then Finish: the list shows him selected.
        zeral::LocalStorage::instance()->applyChanged(
            "user", {UserCtlHarness::user(NewUid, "petrov", "RT_OPERATOR")});
        run.wizard->button(QWizard::FinishButton)->click();
        QTRY_VERIFY(run.wizard.isNull());
        const QModelIndexList selected = h.users->selectionModel()->selectedRows();
        QCOMPARE(selected.size(), 1);
        QCOMPARE(selected.first().data().toUInt(), NewUid);
    }

    void openingNeedsTheRightToGiveDepartments_data()
    {
        QTest::addColumn<bool>("byKey");
        QTest::addRow("action") << false;
        QTest::addRow("Insert") << true;
    }
    void openingNeedsTheRightToGiveDepartments()
    {
        QFETCH(bool, byKey);
        UserCtlHarness h(UserCtlHarness::allRolesBut("RL_ROLE_LINKSUBDIV"));
        QString shown;
        ModalAnswerer answerer([&shown](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            QVERIFY(box);
            shown = box->windowTitle() + '|' + box->text();
            box->close();
        });
        if (byKey)
            QTest::keyClick(h.users, Qt::Key_Insert);
        else
            h.child("actionAddUser")->trigger();
        QVERIFY(answerer.answered());
        QCOMPARE(shown, QStringLiteral("Добавление|Ошибка добавления пользователя\nНет доступа"));
        QVERIFY(!h.screen->findChild<NewUserWizard *>());
    }

    void insertKeyOpensTheWizard()
    {
        UserCtlHarness h;
        QTest::keyClick(h.users, Qt::Key_Insert);
        auto *wizard = h.screen->findChild<NewUserWizard *>();
        QVERIFY(wizard);
        QVERIFY(wizard->isVisible());
        QVERIFY(wizard->isEnabled());
        QCOMPARE(wizard->currentId(), int(NewUserWizard::PropertyPage));
        // The templates are read anew for it.
        QVERIFY(!h.sent(command::RoleTemplateInherit).isEmpty());
    }

    // Where the operator's creations need a confirmation, the confirmers' templates are asked
    // for on the last page, and "Отклонить" leaves the server untouched.
    void refusalSendsNothing()
    {
        WizardRun run({"RL_USER_CREATE_REQUIRES_CONFIRM"});
        run.open();
        if (QTest::currentTestFailed())
            return;
        run.fillUp();
        if (QTest::currentTestFailed())
            return;
        QStringList asked;
        QString buttons;
        ModalAnswerer answerer([&](QWidget *modal) {
            for (const Command &request : run.h.sent(command::ExecSql)) {
                DbQuery query;
                unpack(request.data, query);
                asked.append(query.statements.join(QString()));
            }
            const auto all = modal->findChildren<QPushButton *>();
            for (const QPushButton *button : all)
                buttons += button->text() + (button->isEnabled() ? "+" : "-");
            modal->findChild<QPushButton *>("refuseButton")->click();
        });
        run.wizard->button(QWizard::NextButton)->click();
        QVERIFY(answerer.answered());
        QCOMPARE(asked.size(), 1);
        QVERIFY(asked.first().contains("'RL_CONFIRM_USER_CREATE'"));
        QVERIFY(buttons.contains("Подтвердить-"));
        QVERIFY(buttons.contains("Отклонить+"));
        QCOMPARE(run.progress->state(), BaseProgressWizardPage::State::Dropped);
        QCOMPARE(
            run.log(),
            QStringList{"Пользователь не прошел верификацию для создания нового пользователя."});
        QVERIFY(run.wizard->button(QWizard::FinishButton)->isEnabled());
        QCoreApplication::processEvents();
        QVERIFY(changesSent(run.h.server).isEmpty());
    }

    // Nobody confirms the accounts he creates himself.
    void ownTemplatesAreLeftOut_data()
    {
        QTest::addColumn<QList<TYPE_ID>>("owners");
        QTest::addColumn<QList<TYPE_ID>>("kept");
        QTest::addRow("only the operator's") << QList<TYPE_ID>{2, 2} << QList<TYPE_ID>{};
        QTest::addRow("mixed") << QList<TYPE_ID>{31, 2, 31, 40} << QList<TYPE_ID>{31, 31, 40};
        QTest::addRow("none") << QList<TYPE_ID>{} << QList<TYPE_ID>{};
    }
    void ownTemplatesAreLeftOut()
    {
        QFETCH(QList<TYPE_ID>, owners);
        QFETCH(QList<TYPE_ID>, kept);
        UserCtlHarness::logIn(UserCtlHarness::allRoles()); // the operator is uid 2
        UserProgressWizardPage page;
        Templates given;
        for (const TYPE_ID owner : owners)
            given.insert(owner, zeral::TEMPLATE_DATA());
        page.setTemplatesForVerify(given);
        QList<TYPE_ID> left = page.templatesForVerification().keys();
        std::sort(left.begin(), left.end());
        QCOMPARE(left, kept);
        AuthData::clear();
    }

    // A failed step ends the run: the rest isn't sent, the log names the step, and the note
    // under it says the server's reason and what became of the user.
    void failedStep_data()
    {
        QTest::addColumn<int>("succeeding");
        QTest::addColumn<qint32>("status");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("failedLine");
        QTest::addColumn<QString>("fate");
        const QString notCreated = QStringLiteral("Пользователь не создан.");
        const QString halfMade
            = QStringLiteral("Пользователь «petrov» создан, но настроен не полностью. Завершите "
                             "настройку в его свойствах или удалите его.");
        QTest::addRow("login taken meanwhile")
            << 0 << qint32(zeral::proto::StatusConflict) << "Логин petrov уже занят"
            << "Ошибка добавления пользователя petrov" << notCreated;
        QTest::addRow("template refused")
            << 3 << qint32(zeral::proto::StatusForbidden) << "Недостаточно прав"
            << "Ошибка применения параметров роли пользователя" << halfMade;
        QTest::addRow("rights refused")
            << 5 << qint32(zeral::proto::StatusInternal) << ""
            << "Ошибка сохранения полномочий на 'Объекты доступа' для пользователя" << halfMade;
    }
    void failedStep()
    {
        QFETCH(int, succeeding);
        QFETCH(qint32, status);
        QFETCH(QString, reason);
        QFETCH(QString, failedLine);
        QFETCH(QString, fate);
        WizardRun run;
        run.start();
        if (QTest::currentTestFailed())
            return;
        QSignalSpy finished(run.progress.data(), &BaseProgressWizardPage::runFinished);
        run.answerChanges(succeeding);
        QTRY_COMPARE(changesSent(run.h.server).size(), succeeding + 1);
        run.h.server.answerFailure(changeRequests(run.h.server).last(), status, reason);
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(finished.first().first().toBool(), false);
        QCOMPARE(run.progress->state(), BaseProgressWizardPage::State::Failed);
        QVERIFY2(run.log().contains(failedLine), qPrintable(run.log().join('\n')));
        const QString expected = reason.isEmpty() ? fate : reason + '\n' + fate;
        QTRY_COMPARE(run.note(), reason.isEmpty() ? fate : QString(failedLine + ": " + expected));
        QCOMPARE(run.progress->createdUid(), succeeding > 0 ? NewUid : TYPE_ID(0));
        QCoreApplication::processEvents();
        QCOMPARE(changesSent(run.h.server).size(), succeeding + 1);
        QVERIFY(run.wizard->button(QWizard::FinishButton)->isEnabled());
    }

    void connectionLostMidChain()
    {
        WizardRun run;
        run.start();
        if (QTest::currentTestFailed())
            return;
        QSignalSpy finished(run.progress.data(), &BaseProgressWizardPage::runFinished);
        run.answerChanges(2);
        QTRY_COMPARE(changesSent(run.h.server).size(), 3);
        run.h.server.dropConnection();
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(run.progress->state(), BaseProgressWizardPage::State::Failed);
        QTRY_VERIFY2(run.note().contains("connection dropped by the test"), qPrintable(run.note()));
        QVERIFY(run.note().contains("«petrov» создан, но настроен не полностью"));
        QCOMPARE(changesSent(run.h.server).size(), 3);
    }

    // Closed while its creation is out: the answer finds no window, the held tasks are gone,
    // and the screen goes on with other work.
    void closedWhileRunning()
    {
        WizardRun run;
        run.start();
        if (QTest::currentTestFailed())
            return;
        QTRY_COMPARE(changesSent(run.h.server).size(), 1);
        run.wizard->close();
        QTRY_VERIFY(run.wizard.isNull());
        run.h.server.answerOk(changeRequests(run.h.server).first(),
                              ZRDataStream::pack(qint32(NewUid)));
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QCOMPARE(changesSent(run.h.server).size(), 1);
        // The queue is free again: the next wizard's creation goes out.
        run.h.server.clearSent();
        run.start("sidorov");
        if (QTest::currentTestFailed())
            return;
        QTRY_COMPARE(changesSent(run.h.server), QStringList{command::AddObject});
    }
};

QTEST_MAIN(TestNewUserWizard)
#include "tst_newuserwizard.moc"
