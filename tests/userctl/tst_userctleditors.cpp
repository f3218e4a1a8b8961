// The users screen opening a user's properties dialog: who may open what, what the dialog is
// given, how its save runs through the screen's queue (with and without a confirming
// finger), and what the screen does when the dialog closes.

#include "permissionsfixture.h"
#include "userctlharness.h"

#include <src/userpermissions.h>
#include <src/userproperties.h>
#include <src/userpropertiesdialog.h>
#include <tests/support/modalanswerer.h>

#include <host/core/dbresult.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/dialogs/validatingdialog.h>
#include <host/gui/widgets/parameterizededit.h>

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

namespace {

const QString Confirm = QStringLiteral("RL_USER_UPDATE_REQUIRES_CONFIRM");

// admin (2) is the operator; operator3 (3) and operator4 (4) are others.
void storeStaff()
{
    UserCtlHarness::storeUsers({UserCtlHarness::user(1, "root", "RT_SUPERVISOR"),
                                UserCtlHarness::user(2, "admin", "RT_ADMINISTRATOR"),
                                UserCtlHarness::user(3, "operator3", "RT_OPERATOR"),
                                UserCtlHarness::user(4, "operator4", "RT_OPERATOR")});
    // The trees of the rights tab, and the user 100 beside the staff.
    permissionsfixture::fillStore();
}

QPushButton *buttonOf(QWidget *window, const QString &text)
{
    for (QPushButton *button : window->findChildren<QPushButton *>()) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

// The names of the requests sent after `from`, in order, leaving out the reads the screen
// makes on its own.
QStringList writesSince(const ScriptedServer &server, int from)
{
    QStringList names;
    for (int i = from; i < server.sent().size(); ++i) {
        const QString &name = server.sent().at(i).name;
        if (name == QLatin1String(command::UpdateObject)
            || name == QLatin1String(command::PrescribeRoleTemplate)
            || name == QLatin1String(command::UpdatePermissions))
            names << name;
    }
    return names;
}

} // namespace

class TestUserCtlEditors : public QObject
{
    Q_OBJECT

    // The dialog open on operator3 for an operator with the roles given.
    static QPointer<UserPropertiesDialog> open(UserCtlHarness &h)
    {
        UserCtlHarness::select(h.users, {3});
        h.child("actionProperties")->trigger();
        return h.screen->findChild<UserPropertiesDialog *>();
    }

private slots:
    void init() { storeStaff(); }

    void whoOpensWhat_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<QList<TYPE_ID>>("selected");
        QTest::addColumn<bool>("opens");
        QTest::addColumn<bool>("refused");
        const QStringList all = UserCtlHarness::allRoles();
        const QStringList noUpdate = UserCtlHarness::allRolesBut("RL_USER_UPDATE");
        QTest::addRow("another, with the right") << all << QList<TYPE_ID>{3} << true << false;
        QTest::addRow("two rows") << all << QList<TYPE_ID>{3, 4} << false << false;
        QTest::addRow("no row") << all << QList<TYPE_ID>{} << false << false;
        QTest::addRow("own, without the right") << noUpdate << QList<TYPE_ID>{2} << true << false;
        QTest::addRow("another, without the right")
            << noUpdate << QList<TYPE_ID>{3} << false << true;
    }
    void whoOpensWhat()
    {
        QFETCH(QStringList, roles);
        QFETCH(QList<TYPE_ID>, selected);
        QFETCH(bool, opens);
        QFETCH(bool, refused);
        UserCtlHarness h(roles);
        UserCtlHarness::select(h.users, selected);
        h.server.clearSent();
        QString boxTitle, boxText;
        ModalAnswerer box([&](QWidget *modal) {
            auto *message = qobject_cast<QMessageBox *>(modal);
            QVERIFY(message);
            boxTitle = message->windowTitle();
            boxText = message->text();
            message->accept();
        });
        h.child("actionProperties")->trigger();
        if (refused) {
            QTRY_VERIFY(box.answered());
            QCOMPARE(boxTitle, QStringLiteral("Запрет доступа"));
            QCOMPARE(boxText,
                     QStringLiteral("Недостаточно прав для просмотра параметров пользователя"));
        }
        auto *dialog = h.screen->findChild<UserPropertiesDialog *>();
        QCOMPARE(dialog != nullptr, opens);
        if (!opens) {
            QVERIFY(h.sent(command::GetPermissions).isEmpty());
            return;
        }
        QVERIFY(!box.answered());
        const TYPE_ID uid = selected.first();
        const QString login = UserCtlHarness::shownUids(h.users).contains(uid)
                                  ? zeral::LocalStorage::instance()
                                        ->constObject(uid, QStringLiteral("user"))
                                        .parameters.value("PT_LOGIN")
                                  : QString();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Свойства пользователя %1").arg(login));
        QVERIFY(dialog->isVisible() && dialog->isModal());
        QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
        QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
        // The dialog's user, as the row has him.
        auto *login_edit = dialog->findChild<ParameterizedEdit *>("loginEdit");
        QCOMPARE(login_edit->text(), login);
        // It asks for what the tabs need: templates, the user's rights, his fingerprints.
        QCOMPARE(h.sent(command::RoleTemplateInherit).size(), 1);
        QList<quint32> asked;
        unpack(h.sent(command::GetPermissions).value(0).data, asked);
        QCOMPARE(asked, QList<quint32>{uid});
        asked.clear();
        unpack(h.sent(command::GetUserFingersExists).value(0).data, asked);
        QCOMPARE(asked, QList<quint32>{uid});
        QCOMPARE(dialog->findChild<UserPermissions *>() != nullptr, true);
    }

    void openedByKeyAndDoubleClick_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addRow("Return") << "Return";
        QTest::addRow("Enter") << "Enter";
        QTest::addRow("double click") << "double click";
    }
    void openedByKeyAndDoubleClick()
    {
        QFETCH(QString, way);
        UserCtlHarness h;
        UserCtlHarness::select(h.users, {3});
        if (way == QLatin1String("double click")) {
            const QModelIndex row = h.users->selectionModel()->selectedRows().first();
            emit h.users->doubleClicked(row);
        } else {
            QTest::keyClick(h.users,
                            way == QLatin1String("Return") ? Qt::Key_Return : Qt::Key_Enter);
        }
        QVERIFY(h.screen->findChild<UserPropertiesDialog *>());
    }

    // The answers the screen reads for an open dialog reach its tabs; a failed read of the
    // rights gives the tab an empty set.
    void readsReachTheDialog_data()
    {
        QTest::addColumn<int>("fingers");
        QTest::addColumn<bool>("warning");
        QTest::addRow("no fingerprints") << 0 << true;
        QTest::addRow("two fingerprints") << 2 << false;
    }
    void readsReachTheDialog()
    {
        QFETCH(int, fingers);
        QFETCH(bool, warning);
        UserCtlHarness h;
        QPointer<UserPropertiesDialog> dialog = open(h);
        QVERIFY(dialog);
        auto *label = dialog->findChild<QLabel *>("lbWarning");
        QVERIFY(label && label->isHidden());
        // A count for somebody else, the dialog isn't waiting for.
        h.server.answerOk(h.sent(command::GetUserFingersExists).last(),
                          ZRDataStream::pack(QHash<quint32, quint32>{{4, 0}}));
        QVERIFY(label->isHidden());
        QMetaObject::invokeMethod(h.screen, "showUserProperties"); // a second dialog asks again
        auto dialogs = h.screen->findChildren<UserPropertiesDialog *>();
        QCOMPARE(dialogs.size(), 2);
        h.server.answerOk(h.sent(command::GetUserFingersExists).last(),
                          ZRDataStream::pack(QHash<quint32, quint32>{{3, quint32(fingers)}}));
        QCOMPARE(label->isVisibleTo(dialog), warning);

        QSignalSpy rights(h.screen, &UserCtl::permissionsRead);
        const QList<zeral::OBJECT_PERMISSION> granted{{3, 50, 7}};
        h.server.answerOk(h.sent(command::GetPermissions).first(), ZRDataStream::pack(granted));
        h.server.answerFailure(h.sent(command::GetPermissions).last(), zeral::proto::StatusInternal,
                               QStringLiteral("сбой"));
        QCOMPARE(rights.size(), 2);
        QCOMPARE(rights.at(0).at(0).value<QList<zeral::OBJECT_PERMISSION>>().size(), 1);
        QVERIFY(rights.at(1).at(0).value<QList<zeral::OBJECT_PERMISSION>>().isEmpty());
    }

    // Save runs the tabs' tasks through the queue in the order properties, roles, rights;
    // with a confirmation required, only after a second person's finger, and a refusal sends
    // nothing.
    void saveThroughTheQueue_data()
    {
        QTest::addColumn<bool>("confirmRequired");
        QTest::addColumn<QString>("press");
        QTest::addColumn<QStringList>("writes");
        const QStringList all{command::UpdateObject, command::UpdateObject,
                              command::UpdatePermissions};
        QTest::addRow("no confirmation") << false << QString() << all;
        QTest::addRow("confirmed") << true << "Подтвердить" << all;
        QTest::addRow("refused") << true << "Отклонить" << QStringList();
    }
    void saveThroughTheQueue()
    {
        QFETCH(bool, confirmRequired);
        QFETCH(QString, press);
        QFETCH(QStringList, writes);
        QStringList roles = UserCtlHarness::allRoles();
        if (confirmRequired)
            roles << Confirm;
        UserCtlHarness h(roles);
        h.server.script(command::UpdateObject,
                        [](const Command &r) { return Command::answer(r, 1); });
        h.server.script(command::UpdatePermissions,
                        [](const Command &r) { return Command::answer(r, 1); });
        QPointer<UserPropertiesDialog> dialog = open(h);
        h.server.answerOk(h.sent(command::GetPermissions).last(),
                          ZRDataStream::pack(
                              QList<zeral::OBJECT_PERMISSION>{{3, permissionsfixture::Reader, 7}}));
        auto *surname = dialog->findChild<ParameterizedEdit *>("surnameEdit");
        surname->setFocus();
        surname->selectAll();
        QTest::keyClicks(surname, QStringLiteral("Petrova"));
        QVERIFY(dialog->isSaveButtonShown());
        const int before = h.server.sent().size();
        dialog->saveButton()->click();

        if (confirmRequired) {
            QPointer<ValidatingDialog> confirming = h.screen->findChild<ValidatingDialog *>();
            QVERIFY(confirming);
            QVERIFY(writesSince(h.server, before).isEmpty());
            if (press == QStringLiteral("Подтвердить")) {
                zeral::TEMPLATE_DATA enrolled;
                enrolled.format = FingerprintReader::SimulatedFormat;
                enrolled.data = SimulatedFingerprintReader::newTemplate();
                DbResult result;
                result.rowCount = 1;
                result.columnCount = 6;
                result.values << 21u << enrolled.format << enrolled.data << 1
                              << QStringLiteral("RT_SECURITY") << QString();
                h.server.answerOk(h.sent(command::ExecSql).last(), ZRDataStream::pack(result));
                auto *widget = qobject_cast<AuthorizationWidget *>(confirming->centralWidget());
                QVERIFY(widget->isEnabled());
                qobject_cast<SimulatedFingerprintReader *>(widget->reader())->touch(enrolled);
            }
            QPushButton *button = buttonOf(confirming, press);
            QVERIFY(button && button->isEnabled());
            button->click();
        }
        QTRY_COMPARE(writesSince(h.server, before), writes);
        // Either way the save has ended for the dialog.
        QVERIFY(!dialog->isSaveButtonShown());
        if (writes.isEmpty())
            return;
        quint32 uid = 0, parent = 0;
        QString type;
        QHash<QString, QString> parameters;
        unpack(h.sent(command::UpdateObject).first().data, uid, type, parent, parameters);
        QCOMPARE(uid, 3u);
        QCOMPARE(parameters.value("PT_SURNAME"), QStringLiteral("Petrova"));
        // The roles tab's save behind it carries its template alone, so it can't put the old
        // surname back.
        parameters.clear();
        unpack(h.sent(command::UpdateObject).last().data, uid, type, parent, parameters);
        QCOMPARE(parameters.keys(), QStringList{"PT_ROLETEMPLATE"});
        QTRY_COMPARE(dialog->messageLine()->text(),
                     QStringLiteral("Параметры пользователя сохранены"));
    }

    // A refusal puts the form back and the dialog's message line ends with the server's
    // reason.
    void refusedSaveSaysWhy()
    {
        UserCtlHarness h;
        h.server.script(command::UpdateObject, [](const Command &r) {
            return Command::failure(r, zeral::proto::StatusConflict,
                                    QStringLiteral("Логин «operator4» уже занят."));
        });
        QPointer<UserPropertiesDialog> dialog = open(h);
        auto *surname = dialog->findChild<ParameterizedEdit *>("surnameEdit");
        surname->selectAll();
        QTest::keyClicks(surname, QStringLiteral("Other"));
        dialog->saveButton()->click();
        QTRY_VERIFY(
            dialog->messageLine()->text().contains(QStringLiteral("Логин «operator4» уже занят.")));
        QCOMPARE(surname->text(), QStringLiteral("Фамилияoperator3"));
        // The roles and rights of the same user were dropped with it.
        QCOMPARE(h.sent(command::UpdateObject).size(), 1);
        QVERIFY(h.sent(command::UpdatePermissions).isEmpty());
    }

    void deletedMeanwhile()
    {
        UserCtlHarness h;
        QPointer<UserPropertiesDialog> dialog = open(h);
        // As the store applies the server's removal pushes.
        zeral::LocalStorage *store = zeral::LocalStorage::instance();
        store->applyRemoved(QStringLiteral("user"), {4});
        QVERIFY(dialog->messageLine()->isHidden());
        store->applyRemoved(QStringLiteral("user"), {3});
        QVERIFY(dialog->messageLine()->isVisibleTo(dialog));
        QCOMPARE(dialog->messageLine()->messageIcon(), MessageWidget::Critical);
        QVERIFY(dialog->messageLine()->text().contains(QStringLiteral("operator3")));
    }

    // Closing selects the user again, in view, with the focus on the list.
    void editFinished()
    {
        UserCtlHarness h;
        QPointer<UserPropertiesDialog> dialog = open(h);
        h.users->clearSelection();
        dialog->reject();
        QTRY_VERIFY(!dialog);
        QCOMPARE(h.users->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(h.users->selectionModel()->selectedRows().first().data().toUInt(), 3u);
    }

    void cancelChangedEnablesTheList()
    {
        UserCtlHarness h;
        h.users->setEnabled(false);
        QMetaObject::invokeMethod(h.screen, "cancelChanged");
        QVERIFY(h.users->isEnabled());
    }
};

QTEST_MAIN(TestUserCtlEditors)
#include "tst_userctleditors.moc"
