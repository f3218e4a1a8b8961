#include "permissionsfixture.h"

#include <src/userpermissions.h>
#include <src/wizards/userpermissionswizardpage.h>

#include <QLayout>
#include <QSignalSpy>
#include <QtTest>

using namespace permissionsfixture;

class TestUserPermissionsWizardPage : public QObject
{
    Q_OBJECT

    // The page as the new-user wizard sets it up for one data type.
    static void setUp(UserPermissionsWizardPage &page, const QString &datatype)
    {
        UserPermissions *editor = page.permissionsWidget();
        editor->setDatatype(datatype);
        editor->setObjectTypeSelectorEnabled(false);
        editor->checkAll();
    }

private slots:
    void init()
    {
        zeral::LocalStorage::instance()->clear();
        fillStore();
    }
    void cleanup() { AuthData::clear(); }

    void form()
    {
        logIn();
        UserPermissionsWizardPage page;
        QCOMPARE(page.objectName(), QStringLiteral("UserPermissionsWizardPage"));
        QCOMPARE(page.title(), QStringLiteral("Полномочия"));
        QCOMPARE(page.permissionsWidget()->objectName(), QStringLiteral("permissions"));
        QCOMPARE(page.permissionsWidget()->layout()->contentsMargins(), QMargins());
    }

    void addsPermissionsOfItsPage_data()
    {
        QTest::addColumn<QString>("datatype");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<TYPE_ID>>("objects");
        QTest::addColumn<bool>("right");
        // clang-format off
        QTest::addRow("departments") << "orgstructure" << "Подразделения" << QList<TYPE_ID>{Root, Firm, Sales, SalesEast, Stock} << true;
        QTest::addRow("access objects") << "placing" << "Объекты доступа" << QList<TYPE_ID>{Reader, Desk} << true;
        QTest::addRow("reports carry the hidden ones") << "report" << "Отчеты" << QList<TYPE_ID>{Timesheet, HiddenReport, Visits} << true;
        QTest::addRow("access groups") << "policy" << "Группы доступа" << QList<TYPE_ID>{Day} << true;
        QTest::addRow("without the right: disabled, still sent") << "monitoring_settings" << "Настройки мониторинга" << QList<TYPE_ID>{Screen, Alarms} << false;
        // clang-format on
    }
    void addsPermissionsOfItsPage()
    {
        QFETCH(QString, datatype);
        QFETCH(QString, text);
        QFETCH(QList<TYPE_ID>, objects);
        QFETCH(bool, right);
        logIn(right ? QStringList{"RL_ROLE_LINKSUBDIV"} : QStringList{"RL_USER_SHOW"});
        UserPermissionsWizardPage page;
        UserPermissions *editor = page.permissionsWidget();
        QCOMPARE(editor->isEnabled(), right);
        setUp(page, datatype);
        QSignalSpy made(editor, &UserPermissions::appendTask);
        QSignalSpy sent(&page, &UserPermissionsWizardPage::appendTask);
        QVERIFY(page.validatePage());
        QCOMPARE(made.size(), 1);
        QCOMPARE(sent.size(), 1);
        const auto original = made.first().first().value<zeral::TaskInfo>();
        const auto task = sent.first().first().value<zeral::TaskInfo>();
        QCOMPARE(task.type, QStringLiteral("add_permissions"));
        QCOMPARE(task.method, QStringLiteral("objectUpdated"));
        QCOMPARE(task.startMessage,
                 QStringLiteral("Сохранение полномочий на '%1' для пользователя").arg(text));
        QCOMPARE(task.errorMessage,
                 QStringLiteral("Ошибка сохранения полномочий на '%1' для пользователя").arg(text));
        // Everything else is the editor's task as it was: the same task, for a user to come.
        QCOMPARE(task.id, original.id);
        QCOMPARE(task.uid, TYPE_ID(0));
        QCOMPARE(task.data, original.data);
        QCOMPARE(task.receiver.data(), static_cast<QObject *>(editor));
        QList<TYPE_ID> expected = objects;
        std::sort(expected.begin(), expected.end());
        bool valuesRight = false;
        QCOMPARE(objectsOf(task, &valuesRight), expected);
        QVERIFY(valuesRight);
    }

    void emptyPageSendsNothing()
    {
        logIn();
        UserPermissionsWizardPage page;
        setUp(page, "report");
        page.permissionsWidget()->uncheckAll();
        QSignalSpy sent(&page, &UserPermissionsWizardPage::appendTask);
        QVERIFY(page.validatePage());
        QCOMPARE(sent.size(), 0);
    }
};

QTEST_MAIN(TestUserPermissionsWizardPage)
#include "tst_userpermissionswizardpage.moc"
