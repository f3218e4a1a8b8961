// The properties tab of the mobile user dialog: the linked employee it shows, the warning
// while the login differs from his e-mail, the expiry, the tasks it sends and what it
// makes of their outcome, and the department path.
#include <tests/support/requiredchild.h>
#include "userctlharness.h"

#include <src/mobileuserproperties.h>

#include <host/gui/widgets/parameterizededit.h>
#include <host/gui/widgets/zrdateedit.h>
#include <shared/inheritdata.h>
#include <shared/metatypes.h>

#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

using zeral::TaskInfo;
using Data = QMultiMap<QString, QVariant>;

namespace {

constexpr TYPE_ID MobileUid = 10;
constexpr TYPE_ID OtherUid = 11;
constexpr TYPE_ID WorkerUid = 50;
constexpr TYPE_ID JobUid = 60;
constexpr TYPE_ID RootUid = 1, FirmUid = 2, SalesUid = 3;
const QString Email = QStringLiteral("petrov@firm.ru");

zeral::ObjectInfo worker(const QString &email)
{
    zeral::ObjectInfo object = testing::makeWorker(WorkerUid, "Петров", "Пётр", "Петрович");
    object.parent = SalesUid;
    object.parameters.insert(QStringLiteral("PT_JOBLINK"), QString::number(JobUid));
    if (!email.isNull())
        object.parameters.insert(QStringLiteral("PT_EMAIL"), email);
    return object;
}

zeral::ObjectInfo mobileUser(const QString &login, bool linked, const QString &expires = {})
{
    zeral::ObjectInfo user = UserCtlHarness::user(MobileUid, login, "RT_MOBILE");
    user.parameters.insert(QStringLiteral("PT_PASSWORD_EXPIRED"), expires);
    if (linked) {
        zeral::_INHERIT_DATA link;
        link.parent = MobileUid;
        link.child = WorkerUid;
        link.linkType = zeral::INHERIT_WORKER_USER;
        user.children.insert(zeral::INHERIT_WORKER_USER, link);
    }
    return user;
}

zeral::ObjectInfo named(TYPE_ID uid, const char *type, const QString &name, TYPE_ID parent = 0)
{
    return testing::makeObject(uid, QLatin1String(type), {{"PT_NAME", name}}, parent);
}

// The users, the employee (with that address; none for a null text), his position and
// department, and the database settings.
void fillStore(const zeral::ObjectInfo &user, const QString &email = Email,
               const QString &expiryDays = QStringLiteral("30"))
{
    UserCtlHarness::storeUsers(
        {user, UserCtlHarness::user(OtherUid, QStringLiteral("other@firm.ru"), "RT_MOBILE")});
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    store->applyChanged(QStringLiteral("subject"), {worker(email)});
    store->applyChanged(QStringLiteral("job"), {named(JobUid, "OT_JOB", "Кладовщик")});
    store->applyChanged(QStringLiteral("orgstructure"),
                        {named(RootUid, "OT_SUBJECTROOT", "Организация"),
                         named(FirmUid, "OT_FIRM", "ООО Ромашка", RootUid),
                         named(SalesUid, "OT_DEPARTMENT", "Отдел продаж", FirmUid)});
    store->applyChanged(QStringLiteral("db"),
                        {testing::makeDatabase(100, {{"PT_PASSWORD_EXPIRED", expiryDays}})});
}

struct Editor
{
    Editor()
    {
        QObject::connect(&tab, &MobileUserProperties::appendTask, &tab,
                         [this](const TaskInfo &task) { tasks.append(task); });
        tab.show();
    }
    template<class Widget>
    Widget *child(const char *name) const
    {
        return requiredChild<Widget>(&tab, name);
    }
    ParameterizedEdit *login() const { return child<ParameterizedEdit>("loginEdit"); }
    QCheckBox *expiryCheck() const { return child<QCheckBox>("passwExpireCheck"); }
    ZRDateEdit *expiry() const { return child<ZRDateEdit>("passwordExpireDateEdit"); }
    QString label(const char *name) const { return child<QLabel>(name)->text(); }
    bool warned() const { return child<QWidget>("wrongEmailWidget")->isVisibleTo(&tab); }
    // As typed; an empty one by erasing the last letter.
    void typeLogin(const QString &text)
    {
        login()->clear();
        QTest::keyClicks(login(), text.isEmpty() ? QStringLiteral("x") : text);
        if (text.isEmpty())
            QTest::keyClick(login(), Qt::Key_Backspace);
    }

    MobileUserProperties tab;
    QList<TaskInfo> tasks;
    QSignalSpy messages{&tab, &MobileUserProperties::showMessage};
    QSignalSpy logins{&tab, &MobileUserProperties::loginChanged};
};

Data taskData(const QVariantHash &changes)
{
    Data data;
    data.insert(QStringLiteral("object_type"), QStringLiteral("OT_USER"));
    data.insert(QStringLiteral("parent"), TYPE_ID(40));
    for (auto it = changes.cbegin(); it != changes.cend(); ++it)
        data.insert(QStringLiteral("property-") + it.key(), it.value());
    return data;
}

} // namespace

class TestMobileUserProperties : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { AuthData::clear(); }

    void form()
    {
        UserCtlHarness::logIn(UserCtlHarness::allRoles());
        const zeral::ObjectInfo user = mobileUser(Email, true);
        fillStore(user);
        Editor e;
        QVERIFY(!e.tab.isEnabled());
        QVERIFY(!e.child<QAction>("actionChangePassword")->isEnabled());
        e.tab.setCurrent(user);
        QVERIFY(e.tab.isEnabled());
        QVERIFY(e.child<QAction>("actionChangePassword")->isEnabled());
        QCOMPARE(e.login()->text(), Email);
        QCOMPARE(e.label("nameLabel"), QStringLiteral("Петров Пётр Петрович"));
        QCOMPARE(e.label("jobLabel"), QStringLiteral("Кладовщик"));
        // The invisible root of the tree is left out.
        QCOMPARE(e.label("depLabel"), QStringLiteral("ООО Ромашка,Отдел продаж"));
        QVERIFY(e.tasks.isEmpty());

        e.tab.clear();
        QVERIFY(!e.tab.isEnabled());
        QVERIFY(e.login()->text().isEmpty() && e.label("nameLabel").isEmpty()
                && e.label("depLabel").isEmpty());
    }

    void warning_data()
    {
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("email"); // null: the employee has none
        QTest::addColumn<bool>("linked");
        QTest::addColumn<bool>("warned");
        QTest::addRow("equal") << Email << Email << true << false;
        QTest::addRow("case differs") << "Petrov@firm.ru" << Email << true << true;
        QTest::addRow("no employee") << Email << Email << false << true;
        QTest::addRow("no employee, empty login") << "" << Email << false << false;
        QTest::addRow("empty login") << "" << Email << true << true;
        QTest::addRow("employee without address") << Email << QString() << true << true;
    }
    void warning()
    {
        QFETCH(QString, login);
        QFETCH(QString, email);
        QFETCH(bool, linked);
        UserCtlHarness::logIn(UserCtlHarness::allRoles());
        const zeral::ObjectInfo user = mobileUser(login, linked);
        fillStore(user, email);
        Editor e;
        e.tab.setCurrent(user);
        QTEST(e.warned(), "warned");
        // Typing what the linked employee has (nothing, without one) ends it at once.
        e.typeLogin(linked ? email : QString());
        QVERIFY(!e.warned());
    }

    void expiry_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("days");
        QTest::addColumn<QDate>("shown");
        const QDate today = QDate::currentDate();
        QTest::addRow("stored date") << "2031-05-17"
                                     << "30" << QDate(2031, 5, 17);
        QTest::addRow("none: the default") << ""
                                           << "30" << today.addDays(30);
        QTest::addRow("days no number") << ""
                                        << "abc" << today;
    }
    void expiry()
    {
        QFETCH(QString, stored);
        QFETCH(QString, days);
        UserCtlHarness::logIn(UserCtlHarness::allRoles());
        const zeral::ObjectInfo user = mobileUser(Email, true, stored);
        fillStore(user, Email, days);
        Editor e;
        e.tab.setCurrent(user);
        QCOMPARE(e.expiryCheck()->isChecked(), !stored.isEmpty());
        QCOMPARE(e.expiry()->isEnabled(), !stored.isEmpty());
        QTEST(e.expiry()->date(), "shown");
        QVERIFY(e.expiry()->highlightsPast());
    }

    void applyChanges_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("typed"); // null: the login is left alone
        QTest::addColumn<bool>("toggle");
        QTest::addColumn<QVariantHash>("sent");
        QTest::addRow("nothing changed, no expiry")
            << "" << QString() << false << QVariantHash{{"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("nothing changed, with expiry")
            << "2031-05-17" << QString() << false
            << QVariantHash{{"PT_PASSWORD_EXPIRED", "2031-05-17"}};
        QTest::addRow("login retyped as it was")
            << "" << Email << false << QVariantHash{{"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("new login")
            << ""
            << "p.petrov@firm.ru" << false
            << QVariantHash{{"PT_LOGIN", "p.petrov@firm.ru"}, {"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("box unchecked")
            << "2031-05-17" << QString() << true << QVariantHash{{"PT_PASSWORD_EXPIRED", ""}};
        QTest::addRow("box checked")
            << "" << QString() << true
            << QVariantHash{
                   {"PT_PASSWORD_EXPIRED", QDate::currentDate().addDays(30).toString(Qt::ISODate)}};
    }
    void applyChanges()
    {
        QFETCH(QString, stored);
        QFETCH(QString, typed);
        QFETCH(bool, toggle);
        QFETCH(QVariantHash, sent);
        UserCtlHarness::logIn(UserCtlHarness::allRoles());
        const zeral::ObjectInfo user = mobileUser(Email, true, stored);
        fillStore(user);
        Editor e;
        e.tab.setCurrent(user);
        if (!typed.isNull())
            e.typeLogin(typed);
        if (toggle)
            QTest::mouseClick(e.expiryCheck(), Qt::LeftButton);
        e.tab.applyChanges();
        QCOMPARE(e.tasks.size(), 1);
        const TaskInfo &task = e.tasks.first();
        QCOMPARE(task.uid, MobileUid);
        QCOMPARE(task.type, QStringLiteral("save_object"));
        QCOMPARE(task.receiver.data(), &e.tab);
        QCOMPARE(task.method, QStringLiteral("saved"));
        QCOMPARE(task.startMessage, "Сохранение параметров пользователя " + Email);
        QCOMPARE(task.errorMessage, "Ошибка сохранения параметров пользователя " + Email);
        QCOMPARE(task.data, taskData(sent));
    }

    // A refusal puts the form back as last saved; a success makes the new login the held one,
    // so that the next save doesn't send it again.
    void saveOutcome_data()
    {
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("message");
        QTest::addRow("saved") << true << "p.petrov@firm.ru"
                               << "Параметры пользователя сохранены";
        QTest::addRow("refused") << false << Email << "Ошибка сохранения параметров пользователя";
    }
    void saveOutcome()
    {
        QFETCH(bool, accepted);
        QFETCH(QString, login);
        UserCtlHarness::logIn(UserCtlHarness::allRoles());
        const zeral::ObjectInfo user = mobileUser(Email, true);
        fillStore(user);
        Editor e;
        e.tab.setCurrent(user);
        e.typeLogin(QStringLiteral("p.petrov@firm.ru"));
        QVERIFY(e.warned());
        QTest::mouseClick(e.expiryCheck(), Qt::LeftButton);
        e.tab.applyChanges();
        e.tab.saved(accepted ? MobileUid : 0);

        QCOMPARE(e.login()->text(), login);
        QCOMPARE(e.expiryCheck()->isChecked(), accepted);
        QCOMPARE(e.warned(), accepted);
        QTEST(e.messages.last().at(0).toString(), "message");
        QCOMPARE(e.logins.size(), accepted ? 1 : 0);
        if (accepted)
            QCOMPARE(e.logins.first().at(0).toString(), login);
        e.tab.applyChanges();
        QVERIFY(!e.tasks.last().data.contains(QStringLiteral("property-PT_LOGIN")));
    }

    void depName_data()
    {
        QTest::addColumn<int>("depth");
        QTest::addColumn<int>("names");
        QTest::addRow("one") << 1 << 1;
        QTest::addRow("99") << 99 << 99;
        QTest::addRow("100: the top is cut") << 100 << 99;
        QTest::addRow("150") << 150 << 99;
    }
    void depName()
    {
        QFETCH(int, depth);
        // A chain below the invisible root; department i is named "Dn".
        QList<zeral::ObjectInfo> chain{named(1000, "OT_SUBJECTROOT", "Организация")};
        for (int i = 1; i <= depth; ++i)
            chain << named(1000 + TYPE_ID(i), "OT_DEPARTMENT", QStringLiteral("D%1").arg(i),
                           1000 + TYPE_ID(i) - 1);
        zeral::LocalStorage::instance()->clear();
        zeral::LocalStorage::instance()->applyChanged(QStringLiteral("orgstructure"), chain);
        MobileUserProperties tab;
        const QStringList path = tab.depName(1000 + TYPE_ID(depth)).split(QLatin1Char(','));
        QTEST(int(path.size()), "names");
        QCOMPARE(path.last(), QStringLiteral("D%1").arg(depth));
        QCOMPARE(path.first(), QStringLiteral("D%1").arg(depth - path.size() + 1));
        QCOMPARE(tab.depName(0), QString());
        QCOMPARE(tab.depName(1000), QString());
    }
};

QTEST_MAIN(TestMobileUserProperties)
#include "tst_mobileuserproperties.moc"
