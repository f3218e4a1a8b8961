// The two user tabs of the users screen: filled from the local store, cut into desktop and
// mobile users by the role templates when they arrive, kept in step with the store's changes,
// with actions, card and filter box following the operator's selection.
#include "userctlharness.h"

#include <src/userinfowidget.h>

#include <host/gui/models/itemroles.h>
#include <tests/support/paintrecorder.h>

#include <QHeaderView>

#include <QSortFilterProxyModel>
#include <QtTest>

class TestUserCtlLists : public QObject
{
    Q_OBJECT
    using H = UserCtlHarness;
    const QString Users = QStringLiteral("user");

private slots:
    void init()
    {
        H::storeUsers({H::user(1, "root", "RT_SUPERVISOR"), H::user(2, "admin", "RT_ADMINISTRATOR"),
                       H::user(3, "ivanov", "RT_OPERATOR", "b"),
                       H::user(4, "petrov", "RT_OPERATOR"), H::user(5, "mob", "RT_MOBILE"),
                       H::user(6, "chief", "RT_MOBILE_CHIEF", "B"), H::user(7, "duty", "RT_DUTY"),
                       H::user(8, "admin2", "RT_ADMINISTRATOR"), H::user(9, "ghost", "RT_GONE")});
    }
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void tabsSplitByTemplates_data()
    {
        QTest::addColumn<bool>("ownTemplateAllowed");
        QTest::addColumn<QList<TYPE_ID>>("users");
        // The operator always sees himself; the other administrator only by the server's word.
        QTest::addRow("own template allowed") << true << QList<TYPE_ID>{2, 8, 7, 3, 4, 1};
        QTest::addRow("own template refused") << false << QList<TYPE_ID>{2, 7, 3, 4, 1};
    }
    void tabsSplitByTemplates()
    {
        QFETCH(bool, ownTemplateAllowed);
        H h;
        // Before the templates come, the mobile tab can't know who logs in from a phone.
        QCOMPARE(h.mobile->model()->rowCount(), 0);
        h.answerTemplates(ownTemplateAllowed);
        // Sorted by login; the mobile templates are not on the first tab, the unknown one
        // nowhere.
        QTEST(H::shownUids(h.users), "users");
        QCOMPARE(H::shownUids(h.mobile), (QList<TYPE_ID>{6, 7, 5}));
        QVERIFY(h.users->isColumnHidden(1) && h.users->isColumnHidden(2));
        const QAbstractItemModel *rows = h.users->model();
        const auto text = [rows](int row, int column, int role = ItemRoles::SortText) {
            return rows->index(row, column).data(role).toString();
        };
        QCOMPARE(text(0, 4), QStringLiteral("Администратор"));
        QCOMPARE(text(H::shownUids(h.users).indexOf(7), 4), QStringLiteral("Дежурный"));
        QCOMPARE(text(H::shownUids(h.users).indexOf(3), 3), QStringLiteral("Фамилияivanov Имя "));
        QCOMPARE(text(H::shownUids(h.users).indexOf(3), 5, ItemRoles::ObjectState), "b");
        // A template that isn't in the table has no name.
        const auto *source = static_cast<const QSortFilterProxyModel *>(rows)->sourceModel();
        const QModelIndexList ghost = source->match(source->index(0, 0), Qt::DisplayRole, 9u);
        QCOMPARE(ghost.size(), 1);
        QCOMPARE(ghost.first().siblingAtColumn(4).data(ItemRoles::SortText).toString(), QString());
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
        QFETCH(bool, single);
        H h;
        h.answerTemplates();
        H::select(h.users, {4}); // a change of selection, also for the empty one
        H::select(h.users, selected);
        QTEST(h.child("actionBlockChange")->text(), "blockText");
        QTEST(h.child("actionBlockChange")->icon().name(), "blockIcon");
        QCOMPARE(h.child("actionBlockChange")->isEnabled(), !selected.isEmpty());
        QCOMPARE(h.child("actionRemove")->isEnabled(), !selected.isEmpty());
        QCOMPARE(h.child("actionProperties")->isEnabled(), single);
        QCOMPARE(h.child("actionFingerptint")->isEnabled(), single);
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
        H h;
        h.answerTemplates();
        H::select(h.users, {4});
        H::select(h.mobile, {5});
        QVERIFY(h.child(qPrintable(action))->isEnabled());
        // The rights are asked anew at the next selection.
        H::logIn(H::allRolesBut(missing));
        H::select(h.users, {3});
        H::select(h.mobile, {6});
        QVERIFY(!h.child(qPrintable(action))->isEnabled());
    }

    void storeChangesReachOnlyWhatTheyConcern()
    {
        H h;
        h.answerTemplates();
        H::select(h.users, {4});
        QAction *remove = h.child("actionRemove");
        auto *store = zeral::LocalStorage::instance();

        // Another user's change and another dataset's change leave the actions alone.
        remove->setEnabled(false);
        store->applyChanged(Users, {H::user(3, "ivanov", "RT_OPERATOR")});
        store->applyChanged(QStringLiteral("worker"), {testing::makeWorker(4, "X", "Y")});
        QVERIFY(!remove->isEnabled());
        QCOMPARE(h.users->model()->index(3, 5).data(ItemRoles::ObjectState).toString(),
                 QString()); // ivanov's row is unblocked now

        // The selected user's change recomputes them, and the row follows its new login.
        store->applyChanged(Users, {H::user(4, "aaa", "RT_OPERATOR", "b")});
        QVERIFY(remove->isEnabled());
        QCOMPARE(H::shownUids(h.users).first(), TYPE_ID(4));
        QCOMPARE(h.child("actionBlockChange")->text(), QStringLiteral("Разблокировать"));

        // Removing the selected user leaves the actions as the empty selection wants them.
        store->applyRemoved(Users, {4});
        QVERIFY(!H::shownUids(h.users).contains(4));
        QVERIFY(!remove->isEnabled());
    }

    void filterBoxActsOnThePageInView()
    {
        H h;
        h.answerTemplates();
        const auto filter = [&h](const QString &text) {
            QVERIFY(QMetaObject::invokeMethod(h.screen, "applyUserFilter", Q_ARG(QString, text)));
        };
        filter(QStringLiteral("petr"));
        QCOMPARE(H::shownUids(h.users), QList<TYPE_ID>{4});
        QCOMPARE(H::shownUids(h.mobile).size(), 3);
        filter(QString());
        QCOMPARE(H::shownUids(h.users).size(), 6);

        h.screen->onTabActivated(1);
        filter(QStringLiteral("chief"));
        QCOMPARE(H::shownUids(h.mobile), QList<TYPE_ID>{6});
        QCOMPARE(H::shownUids(h.users).size(), 6);
    }

    // The filter box or a change can take the selected user out of view; the card and the
    // actions must then follow what the view still has selected.
    void selectionLostToTheViewIsFollowed_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QList<TYPE_ID>>("selected");
        QTest::addColumn<int>("left");
        QTest::addRow("filter hides the one selected") << "filter" << QList<TYPE_ID>{3} << 0;
        QTest::addRow("filter hides one of two") << "filter" << QList<TYPE_ID>{3, 4} << 1;
        QTest::addRow("filter keeps him") << "keep" << QList<TYPE_ID>{4} << 1;
        QTest::addRow("turned mobile") << "template" << QList<TYPE_ID>{3} << 0;
    }
    void selectionLostToTheViewIsFollowed()
    {
        QFETCH(QString, how);
        QFETCH(QList<TYPE_ID>, selected);
        QFETCH(int, left);
        H h;
        h.answerTemplates();
        H::select(h.users, selected);
        QVERIFY(h.child("actionRemove")->isEnabled());
        auto *card = h.child<QWidget>("userInfo")->findChild<UserInfoWidget *>();
        QTRY_COMPARE(card->uids().size(), selected.size());

        if (how == QLatin1String("template")) {
            zeral::LocalStorage::instance()->applyChanged(Users,
                                                          {H::user(3, "ivanov", "RT_MOBILE")});
        } else {
            QVERIFY(QMetaObject::invokeMethod(h.screen, "applyUserFilter",
                                              Q_ARG(QString, QStringLiteral("petr"))));
        }
        QCOMPARE(h.users->selectionModel()->selectedRows().size(), left);
        QCOMPARE(h.child("actionRemove")->isEnabled(), left > 0);
        QCOMPARE(h.child("actionBlockChange")->isEnabled(), left > 0);
        QCOMPARE(h.child("actionProperties")->isEnabled(), left == 1);
        QCOMPARE(h.child("actionFingerptint")->isEnabled(), left == 1);
        QTRY_COMPARE(card->uids().size(), left);
    }

    // A renamed user repaints the one cell that shows the name: not the login beside it,
    // whose parameters changed too, nor the header or the rest of the table.
    void aRenameRepaintsTheNameCellOnly()
    {
        H h;
        h.answerTemplates();
        h.screen->resize(1000, 600);
        h.screen->show();
        QVERIFY(QTest::qWaitForWindowExposed(h.screen));
        QHeaderView *header = h.users->horizontalHeader();
        PaintRecorder table(h.users->viewport());
        PaintRecorder headerPaints(header->viewport());
        const int row = H::shownUids(h.users).indexOf(4);
        const QAbstractItemModel *shown = h.users->model();
        const QRect nameCell
            = h.users->visualRect(shown->index(row, 3)).intersected(h.users->viewport()->rect());
        QVERIFY(!nameCell.isEmpty());

        zeral::ObjectInfo renamed = H::user(4, "petrov", "RT_OPERATOR");
        renamed.parameters.insert(QStringLiteral("PT_SURNAME"), QStringLiteral("Сидоров"));
        zeral::LocalStorage::instance()->applyChanged(Users, {renamed});
        QVERIFY(shown->index(row, 3).data(ItemRoles::SortText).toString().startsWith("Сидоров"));

        // Paints elsewhere show when whatever the change asked for has been painted; twice,
        // for what a first round of events only scheduled (the header's delayed layout).
        const QRect tableMark(0, h.users->viewport()->height() - 1, 1, 1);
        const QRect headerMark(0, 0, 1, 1);
        for (int round = 0; round < 2; ++round) {
            const int tableBefore = table.paints();
            const int headerBefore = headerPaints.paints();
            h.users->viewport()->update(tableMark);
            header->viewport()->update(headerMark);
            QTRY_VERIFY(table.paints() > tableBefore && headerPaints.paints() > headerBefore);
        }
        QCOMPARE(table.painted(), QRegion(nameCell) + tableMark);
        QCOMPARE(headerPaints.painted(), QRegion(headerMark));
    }

    void headerLayoutSurvivesARestart()
    {
        QTemporaryDir kept;
        const QString settingsFile = kept.filePath(QStringLiteral("studio.ini"));
        QByteArray saved;
        {
            H h;
            Settings::useFile(settingsFile);
            h.users->setColumnHidden(3, true);
            QTRY_VERIFY(!Settings::value("userctl/users_header_state").toByteArray().isEmpty());
            saved = h.users->headerState();
        }
        H again(H::allRoles(), false);
        Settings::useFile(settingsFile);
        again.screen->insertedToInterface();
        auto *users = again.child<ZRTableView>("usersList");
        QVERIFY(users->isColumnHidden(3));
        QCOMPARE(users->headerState(), saved);
    }
};

QTEST_MAIN(TestUserCtlLists)
#include "tst_userctllists.moc"
