#include <host/core/localstorage.h>
#include <shared/datasets.h>
#include <src/userinfowidget.h>
#include <tests/support/builders.h>

#include <QStandardItemModel>
#include <QTextBlock>
#include <QTextBrowser>
#include <QtTest>

using Params = QHash<QString, QString>;
using zeral::LocalStorage;

namespace {

// The card as lines; an inline image reads as the name of the theme icon it shows.
QStringList cardLines(const UserInfoWidget &widget)
{
    static const QStringList icons = QString("object-OT_ROLE object-OT_ACCESS_POLICY action-lock "
                                             "action-offline common-online object-OT_WORKER "
                                             "object-OT_WORKER-d object-OT_DEPARTMENT")
                                         .split(' ');
    const QTextDocument *document = widget.findChild<QTextBrowser *>("browser")->document();
    QStringList lines;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        QString line;
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextImageFormat image = it.fragment().charFormat().toImageFormat();
            const QVariant shown = document->resource(QTextDocument::ImageResource, image.name());
            QString icon = "?";
            for (const QString &name : icons) {
                if (QIcon::fromTheme(name).pixmap(16, 16).toImage() == shown.value<QImage>())
                    icon = name;
            }
            line += image.isValid() ? '<' + icon + '>' : it.fragment().text();
        }
        lines << line.replace(QChar::Nbsp, ' ');
    }
    return lines;
}

QString inDays(int days)
{
    return QDate::currentDate().addDays(days).toString(Qt::ISODate);
}

} // namespace

class TestUserInfoWidget : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { LocalStorage::instance()->clear(); }

    void card_data()
    {
        QTest::addColumn<Params>("user");
        QTest::addColumn<Params>("worker"); // linked to the user when not empty
        QTest::addColumn<uint>("department");
        QTest::addColumn<int>("line"); // -1 for the whole card
        QTest::addColumn<QString>("expected");
        const QString employee = "Связанный сотрудник\n<object-OT_DEPARTMENT> Склад -> "
                                 "<object-OT_WORKER> Сидоров Олег [17]";
        // clang-format off
        QTest::addRow("whole card") << Params{{"PT_LOGIN", "ivanov"}, {"PT_ROLETEMPLATE", "RT_ADMINISTRATOR"}, {"PT_SURNAME", "Иванов"}, {"PT_NAME", "Иван"}}
            << Params{{"PT_SURNAME", "Сидоров"}, {"PT_NAME", "Олег"}, {"PT_WORKERNUM", " 17 "}} << 50u << -1
            << "Иванов Иван (ivanov)\n\nШаблон ролей\n<object-OT_ROLE> Администратор\n\nПолитика идентификации\n"
               "<object-OT_ACCESS_POLICY> Логин + пароль\n\nСостояние\n<common-online> Пароль установлен\n\n" + employee;
        QTest::addRow("custom template, no login") << Params{{"PT_ROLETEMPLATE", "RT_GUARDS"}, {"PT_PATRONYMIC", "Ильич"}} << Params{} << 0u << 0 << "Ильич";
        QTest::addRow("custom template name") << Params{{"PT_ROLETEMPLATE", "RT_GUARDS"}} << Params{} << 0u << 3 << "<object-OT_ROLE> Охрана";
        QTest::addRow("unknown template") << Params{{"PT_ROLETEMPLATE", "RT_GONE"}} << Params{} << 0u << 3 << "<object-OT_ROLE> ";
        const QStringList identTexts = {"Логин + пароль", "Логин + биометрическая информация",
            "Логин + пароль + биометрическая информация", "Неизвестен", "Авторизация Kerberos", "Неизвестен"};
        for (int ident = 0; ident < identTexts.size(); ++ident)
            QTest::addRow("ident %d", ident) << Params{{"PT_IDENT_TYPE", QString::number(ident)}} << Params{} << 0u << 6 << "<object-OT_ACCESS_POLICY> " + identTexts[ident];
        QTest::addRow("ident unreadable") << Params{{"PT_IDENT_TYPE", "x"}} << Params{} << 0u << 6 << "<object-OT_ACCESS_POLICY> Логин + пароль";
        QTest::addRow("blocked, expired") << Params{{"PT_OBJECTSTATE", "b"}, {"PT_PASSWORD_EXPIRED", inDays(-1)}} << Params{} << 0u << 9 << "<action-lock> Заблокирован";
        QTest::addRow("upper-case B, expiring") << Params{{"PT_OBJECTSTATE", "B"}, {"PT_PASSWORD_EXPIRED", inDays(13)}} << Params{} << 0u << 9 << "<common-online> Необходимо сменить пароль";
        QTest::addRow("expired") << Params{{"PT_PASSWORD_EXPIRED", inDays(-1)}} << Params{} << 0u << 9 << "<action-offline> Истек срок действия пароля";
        QTest::addRow("expires today") << Params{{"PT_PASSWORD_EXPIRED", inDays(0)}} << Params{} << 0u << 9 << "<common-online> Необходимо сменить пароль";
        QTest::addRow("expires in 14 days") << Params{{"PT_PASSWORD_EXPIRED", inDays(14)}} << Params{} << 0u << 9 << "<common-online> Пароль установлен";
        QTest::addRow("dismissed, blank number") << Params{} << Params{{"PT_SURNAME", "Сидоров"}, {"PT_OBJECTSTATE", "d"}, {"PT_WORKERNUM", "  "}} << 0u << 12 << "<object-OT_WORKER-d> Сидоров";
        // clang-format on
    }

    void card()
    {
        QFETCH(Params, user);
        QFETCH(Params, worker);
        QFETCH(uint, department);
        QFETCH(int, line);
        QFETCH(QString, expected);
        zeral::ObjectInfo account = testing::makeObject(10, "OT_USER", user);
        if (!worker.isEmpty())
            account.children.insert(zeral::INHERIT_WORKER_USER, {20, 10, 15, 0, {}, {}});
        LocalStorage *store = LocalStorage::instance();
        store->applyChanged(zeral::USER_DATANAME, {account});
        store->applyChanged(zeral::SUBJECT_DATANAME,
                            {testing::makeObject(20, "OT_WORKER", worker, department)});
        store->applyChanged(zeral::ORGSTRUCTURE_DATANAME,
                            {testing::makeObject(50, "OT_DEPARTMENT", {{"PT_NAME", "Склад"}})});

        UserInfoWidget widget;
        QStandardItemModel list(1, 2);
        list.setData(list.index(0, 0), 10);
        widget.setCurrent({list.index(0, 1)});
        // Drawn before the templates come, and drawn anew, not added to, when they do.
        QCOMPARE(cardLines(widget).value(3), "<object-OT_ROLE> ");
        widget.setRoleTemplates({{"RT_ADMINISTRATOR", {"RT_ADMINISTRATOR", "", "", false, {}, {}}},
                                 {"RT_GUARDS", {"RT_GUARDS", "Охрана", "", true, {}, {}}}});
        QCOMPARE(line < 0 ? cardLines(widget).join('\n') : cardLines(widget).value(line), expected);
    }

    void selection()
    {
        UserInfoWidget widget;
        QStandardItemModel list(2, 2);
        list.setData(list.index(0, 0), (qlonglong(1) << 32) + 5);
        list.setData(list.index(1, 0), 6);
        widget.setCurrent({list.index(0, 0), list.index(1, 1)});
        QCOMPARE(widget.uids(), (QList<zeral::TYPE_ID>{5, 6}));
        QTextDocument *document = widget.findChild<QTextBrowser *>("browser")->document();
        QCOMPARE(document->toPlainText(),
                 "\nВыбрано пользователей:\n2\n\n\n\n\n"); // 3 rows, 2 columns
        widget.setCurrent({});
        QVERIFY(document->isEmpty());
    }
};

QTEST_MAIN(TestUserInfoWidget)
#include "tst_userinfowidget.moc"
