// The two user tabs of the users screen: filled from the local store, cut into desktop and
// mobile users by the role templates when they arrive, kept in step with the store's changes,
// with actions, card and filter box following the operator's selection.
#include "userctlharness.h"

#include <src/userinfowidget.h>
#include <tests/support/builders.h>
#include <tests/support/modeldump.h>

#include <host/core/localstorage.h>
#include <host/core/zrdatastream.h>
#include <host/gui/models/itemroles.h>
#include <host/gui/widgets/zrtableview.h>
#include <shared/datasets.h>
#include <shared/roletemplateinfo.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QHeaderView>
#include <QtTest>

#include <list>

using zeral::TYPE_ID;
namespace command = zeral::proto::command;

namespace {

const QString Users = QStringLiteral("user");

zeral::ObjectInfo user(TYPE_ID uid, const QString &login, const QString &roleTemplate,
                       const QString &state = QString())
{
    zeral::ObjectInfo object = testing::makeUser(uid, login);
    object.parameters.insert(QStringLiteral("PT_ROLETEMPLATE"), roleTemplate);
    object.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Фамилия") + login);
    object.parameters.insert(QStringLiteral("PT_NAME"), QStringLiteral("Имя"));
    if (!state.isEmpty())
        object.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), state);
    return object;
}

zeral::_ROLETEMPLATE_INFO roleTemplate(const QString &id, const QStringList &roles,
                                       const QString &customName = QString())
{
    return {id, customName, QString(), !customName.isEmpty(), roles, QString()};
}

// The templates as the server gives them; the supervisor's grants the mobile login here, so
// that only the template filter keeps him off the mobile tab.
QByteArray templatesAnswer(bool ownTemplateAllowed)
{
    const QString mobileLogin = QStringLiteral("RL_MOBILE_LOGIN");
    const zeral::ROLETEMPLATES_HASH templates{
        {"RT_SUPERVISOR", roleTemplate("RT_SUPERVISOR", {mobileLogin, "RL_USER_SHOW"})},
        {"RT_ADMINISTRATOR", roleTemplate("RT_ADMINISTRATOR", {"RL_USER_SHOW"})},
        {"RT_OPERATOR", roleTemplate("RT_OPERATOR", {"RL_USER_SHOW"})},
        {"RT_MOBILE", roleTemplate("RT_MOBILE", {mobileLogin})},
        {"RT_MOBILE_CHIEF", roleTemplate("RT_MOBILE_CHIEF", {mobileLogin})},
        {"RT_DUTY", roleTemplate("RT_DUTY", {mobileLogin}, QStringLiteral("Дежурный"))},
    };
    return ZRDataStream::pack(templates, QList<QString>(), ownTemplateAllowed);
}

// The uids a table shows, top to bottom.
QList<TYPE_ID> shownUids(const QAbstractItemView *table)
{
    QList<TYPE_ID> uids;
    const QAbstractItemModel *model = table->model();
    for (int row = 0; row < model->rowCount(); ++row)
        uids.append(model->index(row, 0).data().toUInt());
    return uids;
}

void select(QAbstractItemView *table, const QList<TYPE_ID> &uids)
{
    table->clearSelection();
    const QAbstractItemModel *model = table->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        if (uids.contains(model->index(row, 0).data().toUInt()))
            table->selectionModel()->select(model->index(row, 0), QItemSelectionModel::Select
                                                                      | QItemSelectionModel::Rows);
    }
}

} // namespace

class TestUserCtlLists : public QObject
{
    Q_OBJECT

    // The screen with the store below, the templates answered as given.
    struct Screen : UserCtlHarness
    {
        explicit Screen(bool ownTemplateAllowed = true,
                        const QStringList &roles = UserCtlHarness::allRoles())
            : UserCtlHarness(roles)
        {
            users = child<ZRTableView>("usersList");
            mobile = child<ZRTableView>("mobileUsersList");
            testers.emplace_back(users->model(),
                                 QAbstractItemModelTester::FailureReportingMode::QtTest);
            testers.emplace_back(mobile->model(),
                                 QAbstractItemModelTester::FailureReportingMode::QtTest);
            answerTemplates(ownTemplateAllowed);
        }
        void answerTemplates(bool ownTemplateAllowed)
        {
            server.answerOk(sent(command::RoleTemplateInherit).last(),
                            templatesAnswer(ownTemplateAllowed));
        }
        QAction *action(const char *name) const { return child<QAction>(name); }
        ZRTableView *users = nullptr;
        ZRTableView *mobile = nullptr;
        std::list<QAbstractItemModelTester> testers;
    };

private slots:
    void init()
    {
        zeral::LocalStorage::instance()->clear();
        zeral::LocalStorage::instance()->applyChanged(
            Users, {user(1, "root", "RT_SUPERVISOR"), user(2, "admin", "RT_ADMINISTRATOR"),
                    user(3, "ivanov", "RT_OPERATOR", "b"), user(4, "petrov", "RT_OPERATOR"),
                    user(5, "mob", "RT_MOBILE"), user(6, "chief", "RT_MOBILE_CHIEF", "B"),
                    user(7, "duty", "RT_DUTY"), user(8, "admin2", "RT_ADMINISTRATOR"),
                    user(9, "ghost", "RT_GONE")});
    }
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void tabsSplitByTemplates()
    {
        UserCtlHarness plain;
        // Before the templates come, the mobile tab can't know who logs in from a phone.
        QVERIFY(plain.child<ZRTableView>("mobileUsersList")->model()->rowCount() == 0);

        Screen h;
        // Sorted by login; the mobile templates are not on the first tab, the unknown one
        // nowhere.
        QCOMPARE(shownUids(h.users), (QList<TYPE_ID>{2, 8, 7, 3, 4, 1}));
        QCOMPARE(shownUids(h.mobile), (QList<TYPE_ID>{6, 7, 5}));
        const QAbstractItemModel *rows = h.users->model();
        QCOMPARE(rows->index(0, 4).data(ItemRoles::SortText).toString(),
                 QStringLiteral("Администратор"));
        QCOMPARE(rows->index(2, 4).data(ItemRoles::SortText).toString(),
                 QStringLiteral("Дежурный"));
        QCOMPARE(rows->index(3, 3).data(ItemRoles::SortText).toString(),
                 QStringLiteral("Фамилияivanov Имя "));
        QCOMPARE(rows->index(3, 5).data(ItemRoles::ObjectState).toString(), QStringLiteral("b"));
        QVERIFY(h.users->isColumnHidden(1));
        QVERIFY(h.users->isColumnHidden(2));
        // A template that isn't in the table has no name.
        const auto *source = static_cast<const QSortFilterProxyModel *>(rows)->sourceModel();
        for (int row = 0; row < source->rowCount(); ++row) {
            if (source->index(row, 0).data().toUInt() == 9)
                QCOMPARE(source->index(row, 4).data(ItemRoles::SortText).toString(), QString());
        }
    }

    void ownTemplateByTheServersWord_data()
    {
        QTest::addColumn<bool>("allowed");
        QTest::addColumn<bool>("otherAdministratorShown");
        QTest::addRow("allowed") << true << true;
        QTest::addRow("not allowed") << false << false;
    }
    void ownTemplateByTheServersWord()
    {
        QFETCH(bool, allowed);
        QFETCH(bool, otherAdministratorShown);
        Screen h(allowed);
        QCOMPARE(shownUids(h.users).contains(8), otherAdministratorShown);
        QVERIFY(shownUids(h.users).contains(2)); // the operator always sees himself
    }

    void actionsFollowTheSelection_data()
    {
        QTest::addColumn<QList<TYPE_ID>>("selected");
        QTest::addColumn<QString>("blockText");
        QTest::addColumn<QString>("blockIcon");
        QTest::addColumn<bool>("single");
        QTest::addRow("unblocked") << QList<TYPE_ID>{4} << "Блокировать"
                                   << "action-lock" << true;
        QTest::addRow("blocked") << QList<TYPE_ID>{3} << "Разблокировать"
                                 << "action-unlock" << true;
        QTest::addRow("mixed") << QList<TYPE_ID>{3, 4} << "Блокировать"
                               << "action-lock" << false;
        QTest::addRow("none") << QList<TYPE_ID>{} << "Разблокировать"
                              << "action-unlock" << false;
    }
    void actionsFollowTheSelection()
    {
        QFETCH(QList<TYPE_ID>, selected);
        QFETCH(QString, blockText);
        QFETCH(QString, blockIcon);
        QFETCH(bool, single);
        Screen h;
        select(h.users, {4}); // a change of selection, also for the empty one
        select(h.users, selected);
        QCOMPARE(h.action("actionBlockChange")->text(), blockText);
        QCOMPARE(h.action("actionBlockChange")->icon().name(), blockIcon);
        QCOMPARE(h.action("actionBlockChange")->isEnabled(), !selected.isEmpty());
        QCOMPARE(h.action("actionRemove")->isEnabled(), !selected.isEmpty());
        QCOMPARE(h.action("actionProperties")->isEnabled(), single);
        QCOMPARE(h.action("actionFingerptint")->isEnabled(), single);
        // The card follows once the burst of changes is over.
        auto *card = h.child<QWidget>("userInfo")->findChild<UserInfoWidget *>();
        QTRY_COMPARE(card->uids().size(), selected.size());
    }

    void actionsNeedTheRights_data()
    {
        QTest::addColumn<QString>("missing");
        QTest::addColumn<QString>("action");
        QTest::addRow("delete") << "RL_USER_DELETE"
                                << "actionRemove";
        QTest::addRow("update") << "RL_USER_UPDATE"
                                << "actionProperties";
        QTest::addRow("update scan") << "RL_USER_UPDATE"
                                     << "actionFingerptint";
        QTest::addRow("block") << "RL_USER_BLOCK"
                               << "actionBlockChange";
        QTest::addRow("mobile block") << "RL_USER_BLOCK"
                                      << "actionBlockMobileChange";
        QTest::addRow("mobile update") << "RL_USER_UPDATE"
                                       << "actionPropertiesMobile";
    }
    void actionsNeedTheRights()
    {
        QFETCH(QString, missing);
        QFETCH(QString, action);
        Screen h;
        select(h.users, {4});
        select(h.mobile, {5});
        QVERIFY(h.action(qPrintable(action))->isEnabled());
        // The rights are asked anew at the next selection.
        QStringList roles = UserCtlHarness::allRoles();
        roles.removeAll(missing);
        UserCtlHarness::logIn(roles);
        select(h.users, {3});
        select(h.mobile, {6});
        QVERIFY(!h.action(qPrintable(action))->isEnabled());
    }

    void storeChangesReachOnlyWhatTheyConcern()
    {
        Screen h;
        select(h.users, {4});
        QAction *remove = h.action("actionRemove");
        auto *store = zeral::LocalStorage::instance();

        // Another user's change and another dataset's change leave the actions alone.
        remove->setEnabled(false);
        store->applyChanged(Users, {user(3, "ivanov", "RT_OPERATOR")});
        store->applyChanged(QStringLiteral("worker"), {testing::makeWorker(4, "X", "Y")});
        QVERIFY(!remove->isEnabled());
        QCOMPARE(h.users->model()->index(3, 5).data(ItemRoles::ObjectState).toString(),
                 QString()); // ivanov's row is unblocked now

        // The selected user's change recomputes them, and the row follows its new login.
        store->applyChanged(Users, {user(4, "aaa", "RT_OPERATOR", "b")});
        QVERIFY(remove->isEnabled());
        QCOMPARE(shownUids(h.users).first(), TYPE_ID(4));
        QCOMPARE(h.action("actionBlockChange")->text(), QStringLiteral("Разблокировать"));

        // Removing the selected user leaves the actions as the empty selection wants them.
        store->applyRemoved(Users, {4});
        QVERIFY(!shownUids(h.users).contains(4));
        QVERIFY(!remove->isEnabled());
    }

    void filterBoxActsOnThePageInView()
    {
        Screen h;
        QVERIFY(QMetaObject::invokeMethod(h.screen, "applyUserFilter",
                                          Q_ARG(QString, QStringLiteral("petr"))));
        QCOMPARE(shownUids(h.users), QList<TYPE_ID>{4});
        QCOMPARE(shownUids(h.mobile).size(), 3);
        QVERIFY(QMetaObject::invokeMethod(h.screen, "applyUserFilter", Q_ARG(QString, QString())));
        QCOMPARE(shownUids(h.users).size(), 6);

        h.screen->onTabActivated(1);
        QVERIFY(QMetaObject::invokeMethod(h.screen, "applyUserFilter",
                                          Q_ARG(QString, QStringLiteral("chief"))));
        QCOMPARE(shownUids(h.mobile), QList<TYPE_ID>{6});
        QCOMPARE(shownUids(h.users).size(), 6);
    }

    void headerLayoutSurvivesARestart()
    {
        QTemporaryDir kept;
        const QString settingsFile = kept.filePath(QStringLiteral("studio.ini"));
        QByteArray saved;
        {
            Screen h;
            Settings::useFile(settingsFile);
            h.users->setColumnHidden(3, true);
            QTRY_VERIFY(!Settings::value(QStringLiteral("userctl/users_header_state"))
                             .toByteArray()
                             .isEmpty());
            saved = h.users->headerState();
        }
        UserCtlHarness again(UserCtlHarness::allRoles(), false);
        Settings::useFile(settingsFile);
        again.screen->insertedToInterface();
        auto *users = again.child<ZRTableView>("usersList");
        QVERIFY(users->isColumnHidden(3));
        QCOMPARE(users->headerState(), saved);
    }
};

QTEST_MAIN(TestUserCtlLists)
#include "tst_userctllists.moc"
