// The user dialog around its tabs: which tabs an operator gets, the order in which they save,
// and the Save button across the tabs.

#include "permissionsfixture.h"

#include <src/userpermissions.h>
#include <src/userproperties.h>
#include <src/userpropertiesdialog.h>
#include <src/userroles.h>

#include <host/gui/widgets/parameterizededit.h>

#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QtTest>

using namespace permissionsfixture;

namespace {

QStringList tabTitles(const UserPropertiesDialog &dialog)
{
    QStringList titles;
    for (int i = 0; i < dialog.tabWidget()->count(); ++i)
        titles << dialog.tabWidget()->tabText(i);
    return titles;
}

// The dialog on "ivanov" as the screen sets it up, with one access object granted.
void fill(UserPropertiesDialog &dialog)
{
    dialog.initTabs();
    dialog.setCurrent(editedUser());
    dialog.setRoleTemplates(templates({QStringLiteral("RL_USER_SHOW")}));
    dialog.setPermissions({{Edited, Reader, 7}});
}

void edit(ParameterizedEdit *edit, const QString &text)
{
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

} // namespace

class TestUserPropertiesDialog : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        zeral::LocalStorage::instance()->clear();
        fillStore();
    }
    void cleanup() { AuthData::clear(); }

    void tabsByRight_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<QStringList>("titles");
        QTest::addRow("may give rights on objects")
            << QStringList{"RL_USER_SHOW", "RL_ROLE_LINKSUBDIV"}
            << QStringList{"Основное", "Роли доступа", "Полномочия"};
        QTest::addRow("may not") << QStringList{"RL_USER_SHOW"}
                                 << QStringList{"Основное", "Роли доступа"};
    }
    void tabsByRight()
    {
        QFETCH(QStringList, roles);
        QFETCH(QStringList, titles);
        logIn(roles);
        UserPropertiesDialog dialog;
        QSignalSpy tasks(&dialog, &UserPropertiesDialog::appendTask);
        fill(dialog);
        QCOMPARE(tabTitles(dialog), titles);
        QCOMPARE(dialog.permissionsPage() != nullptr, titles.size() == 3);
        // Without the tab the rights read for the user reach nobody, and nothing is sent.
        dialog.applyChanges();
        QCOMPARE(tasks.size(), titles.size() == 3 ? 3 : 2);
    }

    // The tabs save in the order they were added, each as the receiver of its own results.
    void saveOrder()
    {
        logIn();
        UserPropertiesDialog dialog;
        fill(dialog);
        QSignalSpy tasks(&dialog, &UserPropertiesDialog::appendTask);
        dialog.applyChanges();
        QStringList order;
        for (const QList<QVariant> &emitted : qAsConst(tasks)) {
            const auto task = emitted.at(0).value<zeral::TaskInfo>();
            QCOMPARE(task.uid, TYPE_ID(Edited));
            order << QStringLiteral("%1 %2 %3")
                         .arg(task.receiver ? task.receiver->metaObject()->className() : "-",
                              task.type, task.method);
        }
        QCOMPARE(order,
                 (QStringList{"UserProperties save_object saved", "UserRoles save_object saved",
                              "UserPermissions update_permissions saved"}));
        // The rights task carries the object granted.
        QCOMPARE(objectsOf(tasks.at(2).at(0).value<zeral::TaskInfo>()), QList<TYPE_ID>{Reader});
    }

    void saveButton()
    {
        logIn();
        UserPropertiesDialog dialog;
        dialog.initTabs();
        // Filling raises nothing, whatever the tabs emit meanwhile.
        emit dialog.propertiesPage()->dataEdited();
        dialog.setCurrent(editedUser());
        QVERIFY(!dialog.isSaveButtonShown());

        auto *surname = dialog.findChild<ParameterizedEdit *>("surnameEdit");
        auto *login = dialog.findChild<ParameterizedEdit *>("loginEdit");
        edit(surname, QStringLiteral("Ivanova"));
        QVERIFY(dialog.isSaveButtonShown());
        // A blank login takes the button away though the surname waits to be saved ...
        edit(login, QStringLiteral(" "));
        QVERIFY(!dialog.isSaveButtonShown());
        // ... and an edit on another tab brings it back.
        emit dialog.rolesPage()->dataEdited();
        QVERIFY(dialog.isSaveButtonShown());
        edit(login, QStringLiteral("ivanova"));
        QVERIFY(dialog.isSaveButtonShown());

        QSignalSpy saves(&dialog, &TabbedDialog::save);
        dialog.saveButton()->click();
        QCOMPARE(saves.size(), 1);
    }
};

QTEST_MAIN(TestUserPropertiesDialog)
#include "tst_userpropertiesdialog.moc"
