#include "wizardpagefixture.h"

#include <src/wizards/userroleswizardpage.h>
#include <tests/support/builders.h>

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/gui/widgets/zrcombobox.h>

#include <QAbstractItemModelTester>
#include <QFormLayout>
#include <QLabel>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QtTest>

using wizardpages::propertiesOf;
using Wizard = PageInWizard<UserRolesWizardPage>;
using Entries = QList<QPair<QString, QString>>; // shown text, id

namespace {
zeral::_ROLETEMPLATE_INFO templateInfo(const QString &id, const QString &name = QString(),
                                       bool custom = false)
{
    return {id, name, QString(), custom, {QStringLiteral("RL_USER_SHOW")}, QString()};
}

zeral::ROLETEMPLATES_HASH table(const QList<zeral::_ROLETEMPLATE_INFO> &templates)
{
    zeral::ROLETEMPLATES_HASH hash;
    for (const zeral::_ROLETEMPLATE_INFO &info : templates)
        hash.insert(info.id, info);
    return hash;
}

// The templates the users screen gets for an administrator: built-in ones, the mobile ones
// and a custom one.
zeral::ROLETEMPLATES_HASH usualTable()
{
    return table({templateInfo("RT_SUPERVISOR"), templateInfo("RT_ADMINISTRATOR"),
                  templateInfo("RT_OPERATOR"), templateInfo("RT_MOBILE"),
                  templateInfo("RT_MOBILE_CHIEF"), templateInfo("RT_DUTY", "Дежурный", true)});
}
} // namespace

class TestUserRolesWizardPage : public QObject
{
    Q_OBJECT

    static void logIn(const QString &roleTemplate = QStringLiteral("RT_ADMINISTRATOR"))
    {
        AuthData::set({"admin", 2, "session-42", roleTemplate, {"RL_ROLE_LINKSUBDIV"}, QString()});
    }
    static void setServerDefault(const QString &identType)
    {
        zeral::LocalStorage::instance()->clear();
        if (identType.isNull())
            return;
        zeral::LocalStorage::instance()->applyChanged(
            QStringLiteral("db"), {testing::makeDatabase(1, {{"PT_IDENT_TYPE", identType}})});
    }
    static ZRComboBox *box(const QObject *page, const char *name)
    {
        return page->findChild<ZRComboBox *>(QLatin1String(name));
    }
    static QLabel *warning(const QObject *page)
    {
        return page->findChild<QLabel *>(QStringLiteral("lbWarning"));
    }
    static Entries entries(const ZRComboBox *combo)
    {
        Entries shown;
        for (int i = 0; i < combo->count(); ++i)
            shown.append({combo->itemText(i), combo->itemData(i).toString()});
        return shown;
    }

private slots:
    void init()
    {
        logIn();
        setServerDefault("0");
    }
    void cleanup() { AuthData::clear(); }

    void form()
    {
        UserRolesWizardPage page;
        QCOMPARE(page.objectName(), QStringLiteral("UserRolesWizardPage"));
        QCOMPARE(page.title(), QStringLiteral("Доступ"));
        QCOMPARE(page.size(), QSize(653, 502));
        auto *layout = qobject_cast<QVBoxLayout *>(page.layout());
        QVERIFY(layout);
        QCOMPARE(layout->objectName(), QStringLiteral("verticalLayout"));
        QCOMPARE(layout->itemAt(0)->widget()->objectName(), QStringLiteral("widget"));
        QVERIFY(layout->itemAt(1)->spacerItem());
        QCOMPARE(layout->itemAt(2)->widget(), warning(&page));

        auto *form = qobject_cast<QFormLayout *>(layout->itemAt(0)->widget()->layout());
        QVERIFY(form);
        QCOMPARE(form->fieldGrowthPolicy(), QFormLayout::AllNonFixedFieldsGrow);
        const auto label = [form](int row) {
            return qobject_cast<QLabel *>(form->itemAt(row, QFormLayout::LabelRole)->widget());
        };
        QCOMPARE(label(0)->objectName(), QStringLiteral("label_2"));
        QCOMPARE(label(0)->text(), QStringLiteral("Политика идентификации"));
        QCOMPARE(form->itemAt(0, QFormLayout::FieldRole)->widget(), box(&page, "cbIdentType"));
        QCOMPARE(label(1)->objectName(), QStringLiteral("label"));
        QCOMPARE(label(1)->text(), QStringLiteral("Шаблон"));
        QCOMPARE(form->itemAt(1, QFormLayout::FieldRole)->widget(), box(&page, "cbRoleTemplate"));
        QCOMPARE(wizardpages::nextTabStop(box(&page, "cbIdentType")), box(&page, "cbRoleTemplate"));

        ZRComboBox *identType = box(&page, "cbIdentType");
        const Entries policies{{"Логин + пароль", "0"},
                               {"Логин + биометрическая информация", "1"},
                               {"Логин + пароль + биометрическая информация", "2"},
                               {"Авторизация Kerberos", "4"}};
        QCOMPARE(entries(identType), policies);
        for (int i = 0; i < identType->count(); ++i) {
            QCOMPARE(identType->itemData(i).userType(), int(QMetaType::Int));
            QVERIFY(identType->itemIcon(i).isNull());
        }

        QLabel *lbWarning = warning(&page);
        QCOMPARE(lbWarning->text(),
                 QStringLiteral("Внимание! Пользователь не имеет шаблонов: "
                                "вход по биометрической информации невозможен."));
        QVERIFY(lbWarning->wordWrap());
        QVERIFY(lbWarning->isHidden());
        const QPalette palette = lbWarning->palette();
        QCOMPARE(palette.color(QPalette::Active, QPalette::WindowText), QColor(255, 0, 0));
        QCOMPARE(palette.color(QPalette::Inactive, QPalette::WindowText), QColor(255, 0, 0));
        QCOMPARE(palette.color(QPalette::Disabled, QPalette::WindowText), QColor(120, 120, 120));
        // The form's small font, raised by two points for the warning.
        QCOMPARE(page.font().pointSize(), 8);
        QCOMPARE(lbWarning->font().pointSize(), 10);
    }

    void serverDefaultPolicy_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<int>("chosen");
        QTest::addRow("password") << "0" << 0;
        QTest::addRow("password and biometrics") << "2" << 2;
        QTest::addRow("biometrics") << "1" << 1;
        QTest::addRow("kerberos") << "4" << 4;
        QTest::addRow("no such policy: the first stays") << "3" << 0;
        QTest::addRow("empty setting") << "" << 0;
        QTest::addRow("no database object") << QString() << 0;
    }
    void serverDefaultPolicy()
    {
        QFETCH(QString, setting);
        QFETCH(int, chosen);
        setServerDefault(setting);
        UserRolesWizardPage page;
        QCOMPARE(box(&page, "cbIdentType")->currentData().toInt(), chosen);
        QCOMPARE(page.properties().value("PT_IDENT_TYPE"), QString::number(chosen));
        // Even a biometric default warns only once the operator picks it.
        QVERIFY(warning(&page)->isHidden());
    }

    void warningFollowsThePick_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<int>("policy");
        QTest::addColumn<bool>("warned");
        QTest::addRow("biometrics") << QList<int>{Qt::Key_Down} << 1 << true;
        QTest::addRow("password and biometrics")
            << QList<int>{Qt::Key_Down, Qt::Key_Down} << 2 << true;
        QTest::addRow("kerberos") << QList<int>{Qt::Key_End} << 4 << false;
        QTest::addRow("back to password") << QList<int>{Qt::Key_Down, Qt::Key_Up} << 0 << false;
        QTest::addRow("kerberos after biometrics")
            << QList<int>{Qt::Key_Down, Qt::Key_End} << 4 << false;
    }
    void warningFollowsThePick()
    {
        QFETCH(QList<int>, keys);
        QFETCH(int, policy);
        QFETCH(bool, warned);
        Wizard w;
        w.show();
        ZRComboBox *identType = box(w.page, "cbIdentType");
        for (const int key : keys)
            QTest::keyClick(identType, Qt::Key(key));
        QCOMPARE(identType->currentData().toInt(), policy);
        QCOMPARE(warning(w.page)->isVisible(), warned);
        QVERIFY(w.nextEnabled()); // nothing on this page is mandatory
    }

    void templates_data()
    {
        QTest::addColumn<QString>("own");
        QTest::addColumn<zeral::ROLETEMPLATES_HASH>("templates");
        QTest::addColumn<Entries>("expected");
        QTest::addRow("own and mobile left out, by name")
            << "RT_ADMINISTRATOR" << usualTable()
            << Entries{{"Дежурный", "RT_DUTY"},
                       {"Оператор", "RT_OPERATOR"},
                       {"Супервизор", "RT_SUPERVISOR"}};
        QTest::addRow("a supervisor may hand out the administrator's")
            << "RT_SUPERVISOR" << usualTable()
            << Entries{{"Администратор", "RT_ADMINISTRATOR"},
                       {"Дежурный", "RT_DUTY"},
                       {"Оператор", "RT_OPERATOR"}};
        QTest::addRow("built-in name wins, custom or not")
            << "RT_ADMINISTRATOR"
            << table({templateInfo("RT_OPERATOR", "Свой оператор", true),
                      templateInfo("RT_HR", "Кадры")})
            << Entries{{"Оператор", "RT_OPERATOR"}, {"Отдел кадров", "RT_HR"}};
        QTest::addRow("not built in: its own name, custom or not")
            << "RT_ADMINISTRATOR"
            << table({templateInfo("RT_GUARD", "Охрана"), templateInfo("RT_NIGHT", "Ночь", true)})
            << Entries{{"Ночь", "RT_NIGHT"}, {"Охрана", "RT_GUARD"}};
        QTest::addRow("only the standard mobile ones go")
            << "RT_ADMINISTRATOR" << table({templateInfo("RT_MOBILE_GUEST", "Гость")})
            << Entries{{"Гость", "RT_MOBILE_GUEST"}};
        QTest::addRow("the operator's own is the only desktop one")
            << "RT_ADMINISTRATOR"
            << table({templateInfo("RT_ADMINISTRATOR"), templateInfo("RT_MOBILE"),
                      templateInfo("RT_MOBILE_CHIEF")})
            << Entries{};
        QTest::addRow("empty table")
            << "RT_ADMINISTRATOR" << zeral::ROLETEMPLATES_HASH() << Entries{};
    }
    void templates()
    {
        QFETCH(QString, own);
        QFETCH(zeral::ROLETEMPLATES_HASH, templates);
        QFETCH(Entries, expected);
        logIn(own);
        UserRolesWizardPage page;
        ZRComboBox *combo = box(&page, "cbRoleTemplate");
        QAbstractItemModelTester tester(combo->model(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        page.setRoleTemplates(usualTable()); // an earlier table goes entirely
        page.setRoleTemplates(templates);
        QCOMPARE(entries(combo), expected);
        for (int i = 0; i < combo->count(); ++i)
            QVERIFY(combo->itemIcon(i).isNull());
        // No choice but the first entry.
        QCOMPARE(combo->currentIndex(), expected.isEmpty() ? -1 : 0);
        QCOMPARE(page.properties().value("PT_ROLETEMPLATE"),
                 expected.isEmpty() ? QString() : expected.first().second);
    }

    void newTableLosesTheChoice()
    {
        UserRolesWizardPage page;
        ZRComboBox *combo = box(&page, "cbRoleTemplate");
        page.setRoleTemplates(usualTable());
        combo->setCurrentIndex(2);
        QCOMPARE(page.properties().value("PT_ROLETEMPLATE"), QStringLiteral("RT_SUPERVISOR"));
        page.setRoleTemplates(usualTable());
        QCOMPARE(page.properties().value("PT_ROLETEMPLATE"), QStringLiteral("RT_DUTY"));
    }

    void tasks_data()
    {
        QTest::addColumn<zeral::ROLETEMPLATES_HASH>("templates");
        QTest::addColumn<int>("templateIndex");
        QTest::addColumn<int>("policyIndex");
        QTest::addColumn<QString>("roleTemplate");
        QTest::addColumn<QString>("identType");
        QTest::addRow("operator, password") << usualTable() << 1 << 0 << "RT_OPERATOR"
                                            << "0";
        QTest::addRow("custom, kerberos") << usualTable() << 0 << 3 << "RT_DUTY"
                                          << "4";
        QTest::addRow("supervisor, biometrics") << usualTable() << 2 << 1 << "RT_SUPERVISOR"
                                                << "1";
        QTest::addRow("no template to give") << zeral::ROLETEMPLATES_HASH() << -1 << 2 << ""
                                             << "2";
    }
    void tasks()
    {
        QFETCH(zeral::ROLETEMPLATES_HASH, templates);
        QFETCH(int, templateIndex);
        QFETCH(int, policyIndex);
        QFETCH(QString, roleTemplate);
        QFETCH(QString, identType);
        Wizard w;
        w.page->setRoleTemplates(templates);
        w.show();
        box(w.page, "cbRoleTemplate")->setCurrentIndex(templateIndex);
        box(w.page, "cbIdentType")->setCurrentIndex(policyIndex);
        QVERIFY(w.next());
        QCOMPARE(w.tasks.size(), 2);

        const zeral::TaskInfo save = w.tasks.at(0);
        wizardpages::verifyUserTask(save, "save_object", w.page, "objectUpdated");
        if (QTest::currentTestFailed())
            return;
        const QHash<QString, QString> expected{{"PT_ROLETEMPLATE", roleTemplate},
                                               {"PT_IDENT_TYPE", identType}};
        QCOMPARE(propertiesOf(save), expected);
        // The two properties hold no login: the user is named by nothing.
        QCOMPARE(save.startMessage, QStringLiteral("Изменение ролей пользователя "));
        QCOMPARE(save.errorMessage, QStringLiteral("Ошибка изменения ролей пользователя "));

        const zeral::TaskInfo prescribe = w.tasks.at(1);
        QCOMPARE(prescribe.type, QStringLiteral("prescribe"));
        QCOMPARE(prescribe.uid, zeral::TYPE_ID(0));
        QCOMPARE(prescribe.data.size(), 1);
        QCOMPARE(prescribe.data.value("PT_ROLETEMPLATE").toString(), roleTemplate);
        QCOMPARE(prescribe.receiver.data(), w.page);
        QCOMPARE(prescribe.method, QStringLiteral("objectUpdated"));
        QCOMPARE(prescribe.startMessage, QStringLiteral("Применение параметров роли пользователя"));
        QCOMPARE(prescribe.errorMessage,
                 QStringLiteral("Ошибка применения параметров роли пользователя"));
        QVERIFY(prescribe.id != save.id);
    }
};

QTEST_MAIN(TestUserRolesWizardPage)
#include "tst_userroleswizardpage.moc"
