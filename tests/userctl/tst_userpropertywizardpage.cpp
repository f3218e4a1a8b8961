#include "wizardpagefixture.h"

#include <src/wizards/userpropertywizardpage.h>
#include <tests/support/builders.h>

#include <host/gui/widgets/parameterizededit.h>

#include <QGridLayout>
#include <QLabel>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest>

using wizardpages::md5;
using wizardpages::propertiesOf;
using wizardpages::type;
using Users = zeral::ZRHash<unsigned int, zeral::ObjectInfo>;

class TestUserPropertyWizardPage : public QObject
{
    Q_OBJECT

    // Users with these logins, uids from 10 up.
    static Users usersWith(const QStringList &logins)
    {
        Users users;
        unsigned int uid = 10;
        for (const QString &login : logins) {
            users.insert(uid, testing::makeUser(uid, login));
            ++uid;
        }
        return users;
    }

    template<class Widget = ParameterizedEdit>
    static Widget *child(const QObject *page, const char *name)
    {
        return page->findChild<Widget *>(QLatin1String(name));
    }

private slots:
    void form()
    {
        UserPropertyWizardPage page;
        QCOMPARE(page.objectName(), QStringLiteral("UserPropertyWizardPage"));
        QCOMPARE(page.windowTitle(), QStringLiteral("WizardPage"));
        QCOMPARE(page.title(), QStringLiteral("Параметры"));
        auto *grid = qobject_cast<QGridLayout *>(page.layout());
        QVERIFY(grid);
        // name, text, row, column, column span
        const QList<std::tuple<const char *, QString, int, int, int>> cells{
            {"label_5", "Поля, помеченные *, обязательны для заполнения", 0, 0, 2},
            {"label", "Логин*", 1, 0, 1},
            {"loginEdit", "", 1, 1, 1},
            {"checkLoginButton", "Проверить", 1, 2, 1},
            {"label_2", "Фамилия", 3, 0, 1},
            {"surnameEdit", "", 3, 1, 2},
            {"label_3", "Имя", 4, 0, 1},
            {"nameEdit", "", 4, 1, 2},
            {"label_4", "Отчество", 5, 0, 1},
            {"patronymicEdit", "", 5, 1, 2}};
        for (const auto &[name, text, row, column, span] : cells) {
            QWidget *widget = child<QWidget>(&page, name);
            QVERIFY2(widget, name);
            int r = -1, c = -1, rowSpan = 0, columnSpan = 0;
            grid->getItemPosition(grid->indexOf(widget), &r, &c, &rowSpan, &columnSpan);
            QCOMPARE(QList<int>({r, c, columnSpan}), QList<int>({row, column, span}));
            if (auto *label = qobject_cast<QLabel *>(widget))
                QCOMPARE(label->text(), text);
        }
        for (const char *edit : {"loginEdit", "surnameEdit", "nameEdit", "patronymicEdit"})
            QVERIFY2(child(&page, edit), edit);
        auto *button = child<QToolButton>(&page, "checkLoginButton");
        QCOMPARE(button->text(), QStringLiteral("Проверить"));
        QVERIFY(button->font().underline());
        QVERIFY(button->autoRaise());
        QVERIFY(button->isHidden());
        int r = -1, c = -1, rowSpan = 0, columnSpan = 0;
        grid->getItemPosition(grid->count() - 1, &r, &c, &rowSpan, &columnSpan);
        QVERIFY(grid->itemAt(grid->count() - 1)->spacerItem());
        QCOMPARE(r, 6);
    }

    void login_data()
    {
        QTest::addColumn<QStringList>("existing");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("usable");
        QTest::addRow("nothing typed") << QStringList{"admin"} << "" << false;
        QTest::addRow("blanks only") << QStringList{"admin"} << "   " << false;
        QTest::addRow("taken") << QStringList{"admin", "kuznetsov"} << "kuznetsov" << false;
        QTest::addRow("taken by two users") << QStringList{"guard", "guard"} << "guard" << false;
        QTest::addRow("differs in case") << QStringList{"admin"} << "Admin" << true;
        QTest::addRow("leading blank") << QStringList{"admin"} << " admin" << true;
        QTest::addRow("trailing blank") << QStringList{"admin"} << "admin " << true;
        QTest::addRow("free") << QStringList{"admin"} << "petrov" << true;
        QTest::addRow("no users: only emptiness counts") << QStringList{} << "admin" << true;
        QTest::addRow("no users, blanks") << QStringList{} << " " << false;
        QTest::addRow("user without login") << QStringList{""} << "x" << true;
    }
    void login()
    {
        QFETCH(QStringList, existing);
        QFETCH(QString, typed);
        QFETCH(bool, usable);
        PageInWizard<UserPropertyWizardPage> w;
        w.page->setExistingUsers(usersWith(existing));
        w.show();
        ParameterizedEdit *edit = child(w.page, "loginEdit");
        QSignalSpy changed(w.page, &QWizardPage::completeChanged);
        type(edit, typed);
        QCOMPARE(changed.size(), typed.size());
        QCOMPARE(w.page->isComplete(), usable);
        QCOMPARE(w.nextEnabled(), usable);
        QCOMPARE(edit->borderColor(),
                 usable ? ParameterizedEdit::Normal : ParameterizedEdit::Error);
    }

    void newListOfUsersReplacesTheOld()
    {
        UserPropertyWizardPage page;
        page.setExistingUsers(usersWith({"ivan"}));
        page.setExistingUsers(usersWith({"petr"}));
        child(&page, "loginEdit")->setText("ivan");
        QVERIFY(page.isComplete());
        child(&page, "loginEdit")->setText("petr");
        QVERIFY(!page.isComplete());
    }

    void shownPageMarksTheLoginAtOnce()
    {
        PageInWizard<UserPropertyWizardPage> w;
        w.page->setExistingUsers(usersWith({"admin"}));
        ParameterizedEdit *edit = child(w.page, "loginEdit");
        edit->setText("admin"); // not an edit by the operator: nothing judged yet
        QCOMPARE(edit->borderColor(), ParameterizedEdit::Normal);
        w.show();
        QCOMPARE(edit->borderColor(), ParameterizedEdit::Error);
        QVERIFY(!w.nextEnabled());
    }

    void namesAreOptionalButTold()
    {
        PageInWizard<UserPropertyWizardPage> w;
        w.show();
        type(child(w.page, "loginEdit"), "petrov");
        QSignalSpy changed(w.page, &QWizardPage::completeChanged);
        type(child(w.page, "surnameEdit"), "Пе");
        type(child(w.page, "nameEdit"), "И");
        type(child(w.page, "patronymicEdit"), "С");
        QCOMPARE(changed.size(), 4);
        QVERIFY(w.nextEnabled());
    }

    void createTask_data()
    {
        QTest::addColumn<QString>("login");
        QTest::addColumn<QStringList>("names");
        QTest::addRow("all names") << "petrov" << QStringList{"Петров", "Иван", "Сергеевич"};
        QTest::addRow("no names: sent empty") << "guard3" << QStringList{"", "", ""};
        QTest::addRow("blanks kept as typed") << " ivan " << QStringList{" Иванов", "", ""};
    }
    void createTask()
    {
        QFETCH(QString, login);
        QFETCH(QStringList, names);
        PageInWizard<UserPropertyWizardPage> w;
        w.page->setExistingUsers(usersWith({"admin"}));
        w.show();
        const char *edits[] = {"surnameEdit", "nameEdit", "patronymicEdit"};
        type(child(w.page, "loginEdit"), login);
        for (int i = 0; i < 3; ++i)
            type(child(w.page, edits[i]), names.at(i));
        const qint64 before = zeral::TaskInfo().id;
        zeral::TaskInfo task;
        w.leaveWithOneUserTask("create_object", "objectAdded", &task);
        if (QTest::currentTestFailed())
            return;
        QVERIFY(task.id > before);
        const QHash<QString, QString> expected{{"PT_LOGIN", login},
                                               {"PT_SURNAME", names.at(0)},
                                               {"PT_NAME", names.at(1)},
                                               {"PT_PATRONYMIC", names.at(2)},
                                               {"PT_PASSHASH", md5("Kk739146")}};
        QCOMPARE(propertiesOf(task), expected);
        QCOMPARE(w.page->properties(), expected);
        QCOMPARE(task.startMessage, "Добавление пользователя " + login);
        QCOMPARE(task.errorMessage, "Ошибка добавления пользователя " + login);
    }

    void outsideAWizardTheFieldsGiveNothing()
    {
        // The values come through the wizard's fields: a page on its own has none.
        UserPropertyWizardPage page;
        child(&page, "loginEdit")->setText("petrov");
        child(&page, "nameEdit")->setText("Иван");
        const QHash<QString, QString> expected{{"PT_LOGIN", ""}, {"PT_PASSHASH", md5("Kk739146")}};
        QCOMPARE(page.properties(), expected);
    }
};

QTEST_MAIN(TestUserPropertyWizardPage)
#include "tst_userpropertywizardpage.moc"
