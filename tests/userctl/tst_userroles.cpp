// The roles tab of the user dialogs: which templates it offers to whom, the roles it shows,
// the tasks it hands to the screen's queue, and what it makes of their outcome.
#include "realserverscreen.h"
#include "userctlharness.h"

#include <src/userroles.h>

#include <host/gui/models/fastproxymodel.h>
#include <host/gui/widgets/treeview.h>
#include <host/gui/widgets/zrcombobox.h>
#include <shared/metatypes.h>
#include <tests/support/modeldump.h>

#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

using zeral::TaskInfo;

namespace {

const QString LinkUser = QStringLiteral("RL_ROLE_LINKUSER");
constexpr TYPE_ID OperatorUid = 2; // the harness's operator, of template "RT_ADMINISTRATOR"
constexpr TYPE_ID ClerkUid = 7;

zeral::_ROLETEMPLATE_INFO templ(const QString &id, const QStringList &roles,
                                const QString &customName = QString())
{
    return {id, customName, QString(), !customName.isEmpty(), roles, QString()};
}

// What the server shows an administrator: his own template too, a custom one, and a mobile
// one beyond the two standard ones.
zeral::ROLETEMPLATES_HASH templateTable()
{
    return {
        {"RT_SUPERVISOR", templ("RT_SUPERVISOR", {"RL_USER_SHOW", "RL_USER_UPDATE", LinkUser})},
        {"RT_ADMINISTRATOR", templ("RT_ADMINISTRATOR", {"RL_USER_SHOW", LinkUser})},
        {"RT_OPERATOR", templ("RT_OPERATOR", {"RL_USER_SHOW"})},
        {"RT_DUTY", templ("RT_DUTY", {"RL_USER_UPDATE"}, QStringLiteral("Дежурный"))},
        {"RT_MOBILE", templ("RT_MOBILE", {"RL_MOBILE_LOGIN"})},
        {"RT_MOBILE_CHIEF", templ("RT_MOBILE_CHIEF", {"RL_MOBILE_LOGIN", "RL_USER_SHOW"})},
        {"RT_MOBILE_GUARD", templ("RT_MOBILE_GUARD", {"RL_MOBILE_LOGIN"}, "Мобильный охранник")}};
}

// The catalogue's order differs from the alphabet.
void storeCatalogue()
{
    zeral::LocalStorage::instance()->setRoleCatalogue(
        {{"G_USERS", "Пользователи", {}, true},
         {"RL_USER_SHOW", "Просмотр", "G_USERS", false},
         {"RL_USER_UPDATE", "Изменение", "G_USERS", false},
         {"G_ROLES", "Роли", {}, true},
         {"RL_ROLE_LINKUSER", "Управление ролями пользователей", "G_ROLES", false},
         {"G_MOBILE", "Мобильное приложение", {}, true},
         {"RL_MOBILE_LOGIN", "Вход", "G_MOBILE", false}});
}

zeral::ObjectInfo clerk(const QString &roleTemplate, TYPE_ID uid = ClerkUid)
{
    return UserCtlHarness::user(uid, uid == OperatorUid ? "admin" : "clerk", roleTemplate);
}

struct Editor
{
    explicit Editor(bool mobile = false)
    {
        if (mobile) {
            // As the mobile user dialog sets the tab up.
            editor.setDesktopRolesAvalable(false);
            editor.setMobileRolesAvailable(true);
        }
        QObject::connect(&editor, &UserRoles::appendTask, &editor,
                         [this](const TaskInfo &task) { tasks.append(task); });
        editor.show();
    }
    ZRComboBox *selector() const
    {
        return editor.findChild<ZRComboBox *>(QStringLiteral("roleTemplateSelector"));
    }
    FastProxyModel *roles() const
    {
        return qobject_cast<FastProxyModel *>(
            editor.findChild<TreeView *>(QStringLiteral("roleView"))->model());
    }
    bool shown(const char *label) const
    {
        return editor.findChild<QLabel *>(QLatin1String(label))->isVisible();
    }
    QStringList entries() const
    {
        QStringList ids;
        for (int i = 0; i < selector()->count(); ++i)
            ids << selector()->itemData(i).toString();
        return ids;
    }
    void pick(const QString &id)
    {
        const int index = selector()->findData(id);
        QVERIFY(index >= 0);
        // Through the keyboard, as the operator does: it is what emits activated().
        selector()->setFocus();
        selector()->setCurrentIndex(index > 0 ? index - 1 : 1);
        QTest::keyClick(selector(), index > 0 ? Qt::Key_Down : Qt::Key_Up);
        QCOMPARE(selector()->currentData().toString(), id);
    }
    // The granted roles as the tree shows them, with the check state (2 checked, 1 partly).
    QString tree() const { return testing::dumpTree(*roles(), 0, true); }

    UserRoles editor;
    QAbstractItemModelTester tester{editor.findChild<TreeView *>("roleView")->model(),
                                    QAbstractItemModelTester::FailureReportingMode::QtTest};
    QList<TaskInfo> tasks;
};

QMultiMap<QString, QVariant> saveData(const zeral::ObjectInfo &user)
{
    QMultiMap<QString, QVariant> data;
    data.insert("object_type", user.type);
    data.insert("parent", user.parent);
    for (auto it = user.parameters.cbegin(); it != user.parameters.cend(); ++it)
        data.insert("property-" + it.key(), it.value());
    return data;
}

const QString UserRolesShown
    = "Пользователи:1[Просмотр:2],Роли:2[Управление ролями пользователей:2]";

} // namespace

class TestUserRoles : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        zeral::registerMetaTypes();
        QLoggingCategory::setFilterRules(QStringLiteral("gui.plugin.userctl.warning=false"));
    }
    void init()
    {
        UserCtlHarness::logIn(UserCtlHarness::allRoles());
        UserCtlHarness::storeUsers({});
        storeCatalogue();
    }
    void cleanup() { AuthData::clear(); }

    // The editor is shown, the user set, and then the templates arrive, as in the dialogs.
    void offered_data()
    {
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QString>("present");
        QTest::addColumn<bool>("linkRight");
        QTest::addColumn<bool>("mobile");
        QTest::addColumn<QStringList>("entries"); // in the list's order, by name
        QTest::addColumn<QString>("selected");    // empty: no entry chosen
        QTest::addColumn<QString>("tree");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("info");
        QTest::addColumn<bool>("error");

        const QStringList desktop{"RT_DUTY", "RT_OPERATOR", "RT_SUPERVISOR"};
        const QStringList mobiles{"RT_MOBILE_GUARD", "RT_MOBILE_CHIEF", "RT_MOBILE"};
        const QString operatorRoles = "Пользователи:1[Просмотр:2]";
        // clang-format off
        QTest::addRow("another user") << ClerkUid << "RT_OPERATOR" << true << false
            << desktop << "RT_OPERATOR" << operatorRoles << true << false << false;
        QTest::addRow("another user, no right") << ClerkUid << "RT_OPERATOR" << false << false
            << desktop << "RT_OPERATOR" << operatorRoles << false << false << true;
        QTest::addRow("own card keeps own template") << OperatorUid << "RT_ADMINISTRATOR" << true
            << false << QStringList{"RT_ADMINISTRATOR", "RT_DUTY", "RT_OPERATOR", "RT_SUPERVISOR"}
            << "RT_ADMINISTRATOR" << UserRolesShown << false << true << false;
        QTest::addRow("own card, no right") << OperatorUid << "RT_ADMINISTRATOR" << false << false
            << QStringList{"RT_ADMINISTRATOR", "RT_DUTY", "RT_OPERATOR", "RT_SUPERVISOR"}
            << "RT_ADMINISTRATOR" << UserRolesShown << false << true << true;
        QTest::addRow("user of the operator's template") << ClerkUid << "RT_ADMINISTRATOR" << true
            << false << desktop << "" << "" << true << false << false;
        QTest::addRow("template not in the table") << ClerkUid << "RT_GONE" << true << false
            << desktop << "" << "" << true << false << false;
        QTest::addRow("desktop list keeps a mobile template") << ClerkUid << "RT_MOBILE_CHIEF"
            << true << false << QStringList{"RT_DUTY", "RT_MOBILE_CHIEF", "RT_OPERATOR", "RT_SUPERVISOR"}
            << "RT_MOBILE_CHIEF" << "Пользователи:1[Просмотр:2],Мобильное приложение:2[Вход:2]"
            << true << false << false;
        QTest::addRow("mobile list") << ClerkUid << "RT_MOBILE" << true << true << mobiles
            << "RT_MOBILE" << "Мобильное приложение:2[Вход:2]" << true << false << false;
        QTest::addRow("mobile list keeps a desktop template") << ClerkUid << "RT_OPERATOR" << true
            << true << QStringList{"RT_MOBILE_GUARD", "RT_MOBILE_CHIEF", "RT_MOBILE", "RT_OPERATOR"}
            << "RT_OPERATOR" << operatorRoles << true << false << false;
        // clang-format on
    }
    void offered()
    {
        QFETCH(TYPE_ID, uid);
        QFETCH(QString, present);
        QFETCH(bool, linkRight);
        QFETCH(bool, mobile);
        UserCtlHarness::logIn(linkRight ? UserCtlHarness::allRoles()
                                        : UserCtlHarness::allRolesBut(LinkUser));
        const zeral::ObjectInfo user = clerk(present, uid);
        UserCtlHarness::storeUsers({user});
        Editor e(mobile);
        e.editor.setCurrent(user);
        e.editor.setRoleTemplates(templateTable());

        QTEST(e.entries(), "entries");
        QTEST(e.selector()->currentData().toString(), "selected");
        QTEST(e.tree(), "tree");
        QTEST(e.selector()->isEnabled(), "enabled");
        QTEST(e.shown("infoMessage"), "info");
        QTEST(e.shown("errorMessage"), "error");
        // A custom template shows its own name.
        QCOMPARE(e.selector()->itemText(e.selector()->findData(QStringLiteral("RT_DUTY"))),
                 mobile ? QString() : QStringLiteral("Дежурный"));
    }

    void kindOfTemplate_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<bool>("mobile");
        QTest::addRow("standard") << "RT_MOBILE_CHIEF" << true;
        QTest::addRow("by prefix") << "RT_MOBILE_GUARD" << true;
        QTest::addRow("prefix is case-sensitive") << "RT_Mobile_GUARD" << false;
        QTest::addRow("prefix only at the start") << "X_RT_MOBILE" << false;
        QTest::addRow("desktop") << "RT_OPERATOR" << false;
    }
    void kindOfTemplate()
    {
        QFETCH(QString, id);
        QFETCH(bool, mobile);
        UserRoles editor;
        QCOMPARE(editor.isMobileRole(id), mobile);
        QCOMPARE(editor.isDesktopRole(id), !mobile);
    }

    // The table comes anew (every opening of an editor asks for it): the operator's choice
    // stays and shows the roles as the new table has them; a choice the new table lacks gives
    // way to the user's own template.
    void secondTable()
    {
        const zeral::ObjectInfo user = clerk("RT_OPERATOR");
        UserCtlHarness::storeUsers({user});
        Editor e;
        QSignalSpy edited(&e.editor, &UserRoles::dataEdited);
        e.editor.setCurrent(user);
        e.editor.setRoleTemplates(templateTable());
        QCOMPARE(edited.count(), 0);
        e.pick("RT_SUPERVISOR");
        QCOMPARE(edited.count(), 1);
        QCOMPARE(e.tree(), "Пользователи:2[Просмотр:2,Изменение:2],Роли:2[Управление ролями "
                           "пользователей:2]");

        zeral::ROLETEMPLATES_HASH again = templateTable();
        again["RT_SUPERVISOR"].roles = QList<QString>{"RL_USER_UPDATE"};
        e.editor.setRoleTemplates(again);
        QCOMPARE(e.selector()->currentData().toString(), "RT_SUPERVISOR");
        QCOMPARE(e.tree(), "Пользователи:1[Изменение:2]");
        QCOMPARE(edited.count(), 1);

        again.remove("RT_SUPERVISOR");
        e.editor.setRoleTemplates(again);
        QCOMPARE(e.selector()->currentData().toString(), "RT_OPERATOR");
        QCOMPARE(e.tree(), "Пользователи:1[Просмотр:2]");
    }

    // The store may not hold the user or the catalogue yet: the editor shows the template it
    // was given, and the roles as soon as the catalogue comes.
    void storeStillLoading()
    {
        zeral::LocalStorage::instance()->setRoleCatalogue({});
        Editor e;
        e.editor.setCurrent(clerk("RT_DUTY")); // a user the store doesn't hold yet
        QCOMPARE(e.selector()->currentIndex(), -1);
        e.editor.setRoleTemplates(templateTable());
        QCOMPARE(e.selector()->currentData().toString(), "RT_DUTY");
        QCOMPARE(e.tree(), "");

        Editor before;
        before.editor.setRoleTemplates(templateTable()); // before any user
        QCOMPARE(before.selector()->currentIndex(), -1);
        before.editor.setCurrent(clerk("RT_DUTY"));
        QCOMPARE(before.selector()->currentData().toString(), "RT_DUTY");

        storeCatalogue();
        QCOMPARE(e.tree(), "Пользователи:1[Изменение:2]");
        auto *view = e.editor.findChild<TreeView *>("roleView");
        QVERIFY(view->isExpanded(e.roles()->index(0, 0)));
    }

    // Apply with the selector as the operator left it: one "save_object" always, and a
    // "prescribe" only for a new template.
    void applyTasks_data()
    {
        QTest::addColumn<QString>("present");
        QTest::addColumn<QString>("picked"); // empty: untouched
        QTest::addColumn<QString>("saved");  // the template in the save
        QTest::addColumn<bool>("prescribed");
        QTest::addRow("no change") << "RT_OPERATOR"
                                   << ""
                                   << "RT_OPERATOR" << false;
        QTest::addRow("picked anew the same") << "RT_OPERATOR"
                                              << "RT_OPERATOR"
                                              << "RT_OPERATOR" << false;
        QTest::addRow("new template") << "RT_OPERATOR"
                                      << "RT_DUTY"
                                      << "RT_DUTY" << true;
        QTest::addRow("user of the operator's template keeps it") << "RT_ADMINISTRATOR"
                                                                  << ""
                                                                  << "RT_ADMINISTRATOR" << false;
        QTest::addRow("unknown template kept") << "RT_GONE"
                                               << ""
                                               << "RT_GONE" << false;
        QTest::addRow("unknown template replaced") << "RT_GONE"
                                                   << "RT_SUPERVISOR"
                                                   << "RT_SUPERVISOR" << true;
    }
    void applyTasks()
    {
        QFETCH(QString, present);
        QFETCH(QString, picked);
        QFETCH(QString, saved);
        QFETCH(bool, prescribed);
        const zeral::ObjectInfo user = clerk(present);
        UserCtlHarness::storeUsers({user});
        Editor e;
        e.editor.setCurrent(user);
        e.editor.setRoleTemplates(templateTable());
        if (!picked.isEmpty())
            e.pick(picked);
        e.editor.applyChanges();

        QCOMPARE(e.tasks.size(), prescribed ? 2 : 1);
        const TaskInfo &save = e.tasks.at(0);
        // The template alone: the other parameters belong to the properties tab.
        zeral::ObjectInfo expected = user;
        expected.parameters = {{"PT_ROLETEMPLATE", saved}};
        QCOMPARE(save.uid, ClerkUid);
        QCOMPARE(save.type, "save_object");
        QCOMPARE(save.data, saveData(expected));
        QCOMPARE(save.receiver.data(), static_cast<QObject *>(&e.editor));
        QCOMPARE(save.method, "saved");
        QCOMPARE(save.startMessage, "Сохранение параметров пользователя clerk");
        QCOMPARE(save.errorMessage, "Ошибка сохранения параметров пользователя clerk");
        QVERIFY(save.dependsOn.isEmpty() && save.subtasks.isEmpty());
        if (!prescribed)
            return;
        const TaskInfo &prescribe = e.tasks.at(1);
        QCOMPARE(prescribe.uid, ClerkUid);
        QCOMPARE(prescribe.type, "prescribe");
        QMultiMap<QString, QVariant> data;
        data.insert("PT_ROLETEMPLATE", saved);
        QCOMPARE(prescribe.data, data);
        QVERIFY(!prescribe.receiver);
        QVERIFY(prescribe.method.isEmpty());
        QCOMPARE(prescribe.startMessage, "Изменение параметров пользователя");
        QCOMPARE(prescribe.errorMessage, "Ошибка изменения параметров пользователя");
        QVERIFY(prescribe.dependsOn.isEmpty() && prescribe.subtasks.isEmpty());
        QVERIFY(prescribe.id != save.id);
    }

    // Through the screen's queue to the scripted server: the requests as they go out, and the
    // outcome told back to the editor.
    void throughTheQueue_data()
    {
        QTest::addColumn<bool>("saveSucceeds");
        QTest::addRow("saved") << true;
        QTest::addRow("save refused") << false;
    }
    void throughTheQueue()
    {
        QFETCH(bool, saveSucceeds);
        UserCtlHarness h;
        const zeral::ObjectInfo user = clerk("RT_OPERATOR");
        UserCtlHarness::storeUsers({user});
        Editor e;
        QObject::connect(&e.editor, &UserRoles::appendTask, h.screen, &UserCtl::addTask);
        QObject::connect(h.screen, &UserCtl::roleTemplatesRead, &e.editor,
                         &UserRoles::setRoleTemplates);
        QSignalSpy messages(&e.editor, &UserRoles::showMessage);
        QSignalSpy changed(&e.editor, &UserRoles::roleChanged);
        const auto lastMessage = [&messages] {
            return messages.isEmpty() ? QString() : messages.last().at(0).toString();
        };
        e.editor.setCurrent(user);
        h.answerTemplates();
        QCOMPARE(e.entries(), (QStringList{"RT_DUTY", "RT_OPERATOR", "RT_SUPERVISOR"}));
        e.pick("RT_SUPERVISOR");
        e.editor.applyChanges();

        const QList<Command> saves = h.sent(command::UpdateObject);
        QCOMPARE(saves.size(), 1);
        TYPE_ID uid = 0, parent = 0;
        QString type;
        QHash<QString, QString> parameters;
        unpack(saves.at(0).data, uid, type, parent, parameters);
        QCOMPARE(uid, ClerkUid);
        QCOMPARE(type, "OT_USER");
        QCOMPARE(parent, TYPE_ID(40));
        QCOMPARE(parameters, (QHash<QString, QString>{{"PT_ROLETEMPLATE", "RT_SUPERVISOR"}}));
        QVERIFY(h.sent(command::PrescribeRoleTemplate).isEmpty()); // one request at a time

        if (saveSucceeds) {
            h.server.answerOk(saves.at(0));
            QCOMPARE(h.sent(command::PrescribeRoleTemplate).size(), 1);
            QString id;
            unpack(h.sent(command::PrescribeRoleTemplate).at(0).data, uid, id);
            QCOMPARE(uid, ClerkUid);
            QCOMPARE(id, "RT_SUPERVISOR");
            QTRY_COMPARE(changed.count(), 1);
            QCOMPARE(changed.at(0).at(0).toString(), "RT_SUPERVISOR");
            QCOMPARE(lastMessage(), "Параметры пользователя сохранены");
            QCOMPARE(e.selector()->currentData().toString(), "RT_SUPERVISOR");
        } else {
            h.server.answerFailure(saves.at(0), zeral::proto::StatusForbidden, "no");
            QTRY_COMPARE(lastMessage(), "Ошибка сохранения параметров пользователя");
            QCOMPARE(changed.count(), 0);
            // The prescribe went with the failed save, and the selector went back.
            QVERIFY(h.sent(command::PrescribeRoleTemplate).isEmpty());
            QCOMPARE(e.selector()->currentData().toString(), "RT_OPERATOR");
            QCOMPARE(e.tree(), "Пользователи:1[Просмотр:2]");
        }
        // The editor now holds what the server holds: applying again changes nothing.
        e.tasks.clear();
        e.editor.applyChanges();
        QCOMPARE(e.tasks.size(), 1);
        QCOMPARE(e.tasks.at(0).data.value("property-PT_ROLETEMPLATE").toString(),
                 saveSucceeds ? "RT_SUPERVISOR" : "RT_OPERATOR");
    }

    // The real server: the templates it offers root, the save and the prescribe that the
    // editor's tasks turn into, and the stored template changed.
    void atTheRealServer()
    {
        RealServerScreen studio;
        QCOMPARE(studio.server.start(), QString());
        const auto root = studio.server.rootClient();
        const TYPE_ID clerkUid = harness::addUser(*root, "clerk", "RT_OPERATOR");
        QVERIFY(clerkUid);
        studio.logInAsRootAndLoad();
        if (QTest::currentTestFailed())
            return;
        zeral::LocalStorage *store = zeral::LocalStorage::instance();
        const QString clerkTemplate = [&] {
            return store->constObject(clerkUid, "user").parameters.value("PT_ROLETEMPLATE");
        }();
        QCOMPARE(clerkTemplate, "RT_OPERATOR");

        studio.makeScreen();
        UserCtl *screen = studio.screen.get();
        Editor e;
        QObject::connect(&e.editor, &UserRoles::appendTask, screen, &UserCtl::addTask);
        QObject::connect(screen, &UserCtl::roleTemplatesRead, &e.editor,
                         &UserRoles::setRoleTemplates);
        QSignalSpy said(screen, qOverload<QString>(&UserCtl::showMessage));
        QSignalSpy changed(&e.editor, &UserRoles::roleChanged);
        screen->insertedToInterface();
        e.editor.setCurrent(store->constObject(clerkUid, "user"));
        QTRY_VERIFY(e.selector()->count() > 0);
        QCOMPARE(e.selector()->currentData().toString(), "RT_OPERATOR");
        QVERIFY(e.selector()->isEnabled());
        e.pick("RT_HR");
        e.editor.applyChanges();

        QVERIFY(changed.wait(10000));
        QCOMPARE(changed.at(0).at(0).toString(), "RT_HR");
        QTRY_COMPARE(store->constObject(clerkUid, "user").parameters.value("PT_ROLETEMPLATE"),
                     "RT_HR");
        // Applying once more queues a save behind the prescribe: when it is told, the
        // prescribe has had its answer. It changes nothing, so nothing is prescribed again.
        e.editor.applyChanges();
        QVERIFY(changed.wait(10000));
        QStringList texts;
        for (const QList<QVariant> &arguments : qAsConst(said))
            texts << arguments.at(0).toString();
        QCOMPARE(texts, (QStringList{"Сохранение параметров пользователя clerk",
                                     "Изменение параметров пользователя",
                                     "Сохранение параметров пользователя clerk"}));
        QCOMPARE(store->constObject(clerkUid, "user").parameters.value("PT_ROLETEMPLATE"), "RT_HR");
    }
};

QTEST_MAIN(TestUserRoles)
#include "tst_userroles.moc"
