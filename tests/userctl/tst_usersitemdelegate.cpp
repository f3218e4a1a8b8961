#include <host/core/localstorage.h>
#include <host/gui/models/itemroles.h>
#include <src/mobileuseritemdelegate.h>
#include <tests/support/builders.h>

#include <QStandardItemModel>
#include <QtTest>

class TestUsersItemDelegate : public QObject
{
    Q_OBJECT
    QStandardItemModel model{1, 6};
    const QDate today{2024, 3, 10};
    QModelIndex cell(int column) const { return model.index(0, column); }

private slots:
    void state_data()
    {
        QTest::addColumn<QString>("objectState");
        QTest::addColumn<QString>("expiry");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<QString>("text");
        const auto in = [this](int days) {
            return today.addDays(days).toString(Qt::ISODate);
        };
        const QString lock = "action-lock", online = "common-online", set = "Пароль установлен";
        QTest::addRow("b") << "b"
                           << "" << lock << "Заблокирован";
        QTest::addRow("B and past") << "B" << in(-30) << lock << "Заблокирован";
        QTest::addRow("bb") << "bb"
                            << "" << online << set;
        QTest::addRow("past") << "a" << in(-1) << "common-offline"
                              << "Истек срок действия пароля";
        QTest::addRow("today") << "" << in(0) << online << "Необходимо сменить пароль";
        QTest::addRow("13 ahead") << "" << in(13) << online << "Необходимо сменить пароль";
        QTest::addRow("14 ahead") << "" << in(14) << online << set;
        QTest::addRow("empty") << ""
                               << "" << online << set;
        QTest::addRow("unparsable") << ""
                                    << "10.03.2024" << online << set;
    }

    void state()
    {
        QFETCH(QString, objectState);
        QFETCH(QString, expiry);
        model.setData(cell(5), expiry, Qt::DisplayRole);
        model.setData(cell(5), objectState, ItemRoles::ObjectState);
        const auto state = UsersItemDelegate::accountState(cell(5), today);
        QTEST(UsersItemDelegate::stateIconName(state), "icon");
        QVERIFY(QIcon::hasThemeIcon(UsersItemDelegate::stateIconName(state)));
        QTEST(UsersItemDelegate(nullptr).cellText(cell(5), today), "text");
    }

    void mobileWarning_data()
    {
        QTest::addColumn<QString>("login");
        QTest::addColumn<bool>("linked");
        QTest::addColumn<bool>("warns");
        QTest::addRow("same") << "a@b.ru" << true << false;
        QTest::addRow("other case") << "A@b.ru" << true << true;
        QTest::addRow("no trimming") << "a@b.ru " << true << true;
        QTest::addRow("no employee") << "a@b.ru" << false << true;
        QTest::addRow("no employee, no login") << "" << false << false;
    }

    void mobileWarning()
    {
        QFETCH(QString, login);
        QFETCH(bool, linked);
        zeral::ObjectInfo user = testing::makeUser(7, login);
        if (linked)
            user.children.insert(zeral::INHERIT_WORKER_USER, {70, 7, 15, 0, {}, {}});
        const auto worker = testing::makeObject(70, "OT_WORKER", {{"PT_EMAIL", "a@b.ru"}});
        zeral::LocalStorage::instance()->applyChanged("user", {user});
        zeral::LocalStorage::instance()->applyChanged("subject", {worker});
        QTEST(MobileUserItemDelegate::loginDiffersFromEmail(7), "warns");
        QVERIFY(!MobileUserItemDelegate::loginDiffersFromEmail(99)); // not in the store
    }
};

QTEST_MAIN(TestUsersItemDelegate)
#include "tst_usersitemdelegate.moc"
