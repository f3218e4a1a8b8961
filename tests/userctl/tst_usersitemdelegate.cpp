#include <host/core/localstorage.h>
#include <host/gui/models/itemroles.h>
#include <src/mobileuseritemdelegate.h>
#include <tests/support/builders.h>

#include <QPainter>
#include <QStandardItemModel>
#include <QTableView>
#include <QtTest>

namespace {
// The rows of pixels with ink in an image painted on white: first and last.
QPair<int, int> inkRows(const QImage &image)
{
    int first = -1, last = -1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != qRgb(255, 255, 255)) {
                first = first < 0 ? y : first;
                last = y;
                break;
            }
        }
    }
    return {first, last};
}
} // namespace

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

    // The login (drawn by the base) and the full name (drawn here) on one baseline, however
    // high the view makes its rows.
    void textsShareOneBaseline_data()
    {
        QTest::addColumn<int>("rowHeight");
        QTest::addRow("one line") << 20;
        QTest::addRow("the icon's height") << 28;
        QTest::addRow("tall") << 44;
    }
    void textsShareOneBaseline()
    {
        QFETCH(int, rowHeight);
        const QString surname = QStringLiteral("Ivanov");
        model.setData(cell(0), surname, ItemRoles::SortText);
        model.setData(cell(0), QVariantHash{{QStringLiteral("PT_SURNAME"), surname}},
                      ItemRoles::Parameters);
        QTableView view; // gives the style and palette, as the users table does
        view.setModel(&model);
        UsersItemDelegate delegate(nullptr);
        delegate.setIconSize(24, 24);
        QStyleOptionViewItem option;
        option.initFrom(&view);
        option.widget = &view;
        option.palette.setColor(QPalette::Text, Qt::black);
        option.rect = QRect(0, 0, 160, rowHeight);
        const auto paint = [&](int column) {
            QImage image(option.rect.size(), QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            delegate.paint(&painter, option, cell(column));
            painter.end();
            return inkRows(image);
        };
        const QPair<int, int> login = paint(0);
        QVERIFY(login.first >= 0);
        QCOMPARE(login, paint(3));
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
