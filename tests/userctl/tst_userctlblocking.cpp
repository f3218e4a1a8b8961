// Blocking and deleting from the user lists: the question and the state written for each kind
// of selection, the popups of the outcome, a failed save that takes only its user's tasks,
// and "root", who is never handed to the deletion wizard.
#include "userctlharness.h"

#include <tests/support/builders.h>
#include <tests/support/modalanswerer.h>

#include <host/core/localstorage.h>
#include <host/core/zrdatastream.h>
#include <host/gui/widgets/zrtableview.h>
#include <host/gui/wizards/deleteobjectwizard.h>
#include <shared/roletemplateinfo.h>

#include <QAbstractButton>
#include <QAction>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

using zeral::TYPE_ID;
namespace command = zeral::proto::command;

namespace {

zeral::ObjectInfo user(TYPE_ID uid, const QString &login, const QString &roleTemplate,
                       const QString &state = QString())
{
    zeral::ObjectInfo object = testing::makeUser(uid, login);
    object.parent = 40;
    object.parameters.insert(QStringLiteral("PT_ROLETEMPLATE"), roleTemplate);
    object.parameters.insert(QStringLiteral("PT_NAME"), QStringLiteral("Имя ") + login);
    if (!state.isEmpty())
        object.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), state);
    return object;
}

QByteArray templatesAnswer()
{
    const auto entry = [](const char *id, const QStringList &roles) {
        return zeral::_ROLETEMPLATE_INFO{QLatin1String(id), {}, {}, false, roles, {}};
    };
    const zeral::ROLETEMPLATES_HASH templates{
        {"RT_SUPERVISOR", entry("RT_SUPERVISOR", {"RL_USER_SHOW"})},
        {"RT_ADMINISTRATOR", entry("RT_ADMINISTRATOR", {"RL_USER_SHOW"})},
        {"RT_OPERATOR", entry("RT_OPERATOR", {"RL_USER_SHOW"})},
        {"RT_MOBILE", entry("RT_MOBILE", {"RL_MOBILE_LOGIN"})},
    };
    return ZRDataStream::pack(templates, QList<QString>(), true);
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

// One "data.update_object" request as the server reads it.
struct Saved
{
    TYPE_ID uid = 0;
    QString type;
    TYPE_ID parent = 0;
    QHash<QString, QString> parameters;
};

Saved saved(const Command &request)
{
    Saved s;
    ZRDataStream in(request.data);
    in >> s.uid >> s.type >> s.parent >> s.parameters;
    return s;
}

QStringList popupTexts(const UserCtl *screen)
{
    QStringList texts;
    for (const MessageWidget *popup : screen->popups())
        texts.append(popup->text());
    return texts;
}

// Answers the block question with `button` and keeps what it asked.
struct QuestionAnswer
{
    QString title;
    QString text;
};
ModalAnswerer *answerQuestion(QuestionAnswer *seen, QMessageBox::StandardButton button)
{
    return new ModalAnswerer([seen, button](QWidget *modal) {
        auto *box = qobject_cast<QMessageBox *>(modal);
        QVERIFY(box);
        seen->title = box->windowTitle();
        seen->text = box->text();
        QCOMPARE(static_cast<QAbstractButton *>(box->defaultButton()),
                 box->button(QMessageBox::No));
        box->button(button)->click();
    });
}

} // namespace

class TestUserCtlBlocking : public QObject
{
    Q_OBJECT

    struct Screen : UserCtlHarness
    {
        explicit Screen(const QStringList &roles = UserCtlHarness::allRoles())
            : UserCtlHarness(roles)
        {
            users = child<ZRTableView>("usersList");
            mobile = child<ZRTableView>("mobileUsersList");
            server.answerOk(sent(command::RoleTemplateInherit).last(), templatesAnswer());
        }
        ZRTableView *users = nullptr;
        ZRTableView *mobile = nullptr;
    };

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("gui.plugin.userctl.warning=false"));
    }
    void init()
    {
        zeral::LocalStorage::instance()->clear();
        zeral::LocalStorage::instance()->applyChanged(
            QStringLiteral("user"),
            {user(1, "root", "RT_SUPERVISOR"), user(3, "ivanov", "RT_OPERATOR", "b"),
             user(4, "petrov", "RT_OPERATOR"), user(5, "sidorov", "RT_OPERATOR", "B"),
             user(6, "mob", "RT_MOBILE", "B"), user(7, "mob2", "RT_MOBILE")});
    }
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void blockQuestionAndWrittenState_data()
    {
        QTest::addColumn<bool>("mobileTab");
        QTest::addColumn<QList<TYPE_ID>>("selection");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("state");
        const QString block = QStringLiteral("Заблокировать выбранных пользователей?");
        const QString unblock = QStringLiteral("Разблокировать выбранных пользователей?");
        QTest::addRow("only blocked") << false << QList<TYPE_ID>{3, 5} << unblock << QString();
        QTest::addRow("only unblocked") << false << QList<TYPE_ID>{4} << block << "b";
        QTest::addRow("mixed is blocked whole") << false << QList<TYPE_ID>{3, 4} << block << "b";
        QTest::addRow("mobile, blocked") << true << QList<TYPE_ID>{6} << unblock << QString();
        QTest::addRow("mobile, mixed") << true << QList<TYPE_ID>{6, 7} << block << "b";
    }
    void blockQuestionAndWrittenState()
    {
        QFETCH(bool, mobileTab);
        QFETCH(QList<TYPE_ID>, selection);
        QFETCH(QString, question);
        QFETCH(QString, state);
        Screen h;
        select(mobileTab ? h.mobile : h.users, selection);
        QuestionAnswer seen;
        std::unique_ptr<ModalAnswerer> answerer(answerQuestion(&seen, QMessageBox::Yes));
        const qint64 before
            = QDateTime(QDate::currentDate(), QTime::currentTime(), Qt::UTC).toSecsSinceEpoch();
        h.child<QAction>(mobileTab ? "actionBlockMobileChange" : "actionBlockChange")->trigger();
        QVERIFY(answerer->answered());
        QCOMPARE(seen.title, QStringLiteral("Блокировка пользователей"));
        QCOMPARE(seen.text, question);

        // One save per user, each with every parameter of the stored user.
        QList<TYPE_ID> savedUids;
        for (int i = 0; i < selection.size(); ++i) {
            QCOMPARE(h.sent(command::UpdateObject).size(), i + 1);
            const Command request = h.sent(command::UpdateObject).at(i);
            const Saved s = saved(request);
            savedUids.append(s.uid);
            const zeral::ObjectInfo &stored
                = zeral::LocalStorage::instance()->constObject(s.uid, QStringLiteral("user"));
            QCOMPARE(s.type, QStringLiteral("OT_USER"));
            QCOMPARE(s.parent, TYPE_ID(40));
            QHash<QString, QString> expected = stored.parameters;
            expected.insert(QStringLiteral("PT_OBJECTSTATE"), state);
            expected.insert(QStringLiteral("PT_OBJECTSTATEDATE"),
                            s.parameters.value(QStringLiteral("PT_OBJECTSTATEDATE")));
            QCOMPARE(s.parameters, expected);
            // The local wall-clock time, marked as UTC.
            const qint64 date
                = s.parameters.value(QStringLiteral("PT_OBJECTSTATEDATE")).toLongLong();
            QVERIFY2(date >= before && date <= before + 5, qPrintable(QString::number(date)));
            h.server.answerOk(request);
        }
        std::sort(savedUids.begin(), savedUids.end());
        QCOMPARE(savedUids, selection);
        QTRY_COMPARE(h.screen->popups().size(), selection.size());
        QVERIFY(popupTexts(h.screen).contains(
            QStringLiteral("Изменение блокировки пользователя %1 успешно")
                .arg(zeral::LocalStorage::instance()
                         ->constObject(selection.first(), QStringLiteral("user"))
                         .parameters.value(QStringLiteral("PT_LOGIN")))));
    }

    void failedSaveDropsOnlyThatUsersTasks()
    {
        Screen h;
        select(h.users, {3, 4});
        QuestionAnswer seen;
        std::unique_ptr<ModalAnswerer> answerer(answerQuestion(&seen, QMessageBox::Yes));
        h.child<QAction>("actionBlockChange")->trigger();
        const Command first = h.sent(command::UpdateObject).at(0);
        const TYPE_ID failing = saved(first).uid;
        const TYPE_ID other = failing == 3 ? 4 : 3;
        // Another window's change of the same user waits behind the block.
        zeral::TaskInfo later;
        later.type = QStringLiteral("save_object");
        later.uid = failing;
        later.data.insert(QStringLiteral("object_type"), QStringLiteral("OT_USER"));
        h.screen->addTask(later);

        h.server.answerFailure(first, zeral::proto::StatusForbidden, QStringLiteral("нет прав"));
        QCOMPARE(h.sent(command::UpdateObject).size(), 2);
        QCOMPARE(saved(h.sent(command::UpdateObject).at(1)).uid, other);
        QTRY_COMPARE(popupTexts(h.screen),
                     QStringList{QStringLiteral("Ошибка изменения блокировки пользователя")});
        QCOMPARE(h.screen->popups().first()->messageIcon(), MessageWidget::Critical);

        h.server.answerOk(h.sent(command::UpdateObject).at(1));
        QTRY_COMPARE(h.screen->popups().size(), 2);
        QCOMPARE(h.sent(command::UpdateObject).size(), 2); // the dropped task never went out
    }

    void deleting_data()
    {
        QTest::addColumn<QList<TYPE_ID>>("selection");
        QTest::addColumn<bool>("rootPopup");
        QTest::addColumn<QList<TYPE_ID>>("wizardUids");
        QTest::addRow("root alone") << QList<TYPE_ID>{1} << true << QList<TYPE_ID>{};
        QTest::addRow("root and another") << QList<TYPE_ID>{1, 4} << true << QList<TYPE_ID>{4};
        QTest::addRow("others") << QList<TYPE_ID>{3, 4} << false << QList<TYPE_ID>{3, 4};
    }
    void deleting()
    {
        QFETCH(QList<TYPE_ID>, selection);
        QFETCH(bool, rootPopup);
        QFETCH(QList<TYPE_ID>, wizardUids);
        Screen h;
        select(h.users, selection);
        h.child<QAction>("actionRemove")->trigger();
        QCOMPARE(popupTexts(h.screen).contains(
                     QStringLiteral("Пользователь root не будет удален: запрещено удаление.")),
                 rootPopup);
        auto *wizard = h.screen->findChild<DeleteObjectWizard *>();
        QCOMPARE(wizard != nullptr, !wizardUids.isEmpty());
        if (!wizard)
            return;
        QList<TYPE_ID> uids = wizard->uids();
        std::sort(uids.begin(), uids.end());
        QCOMPARE(uids, wizardUids);
        QVERIFY(wizard->isVisible() && wizard->isModal());
        QCOMPARE(wizard->windowTitle(), QStringLiteral("Мастер удаления пользователей"));
        QVERIFY(!wizard->needVerify());
        wizard->close();
    }

    void deletingFromTheMobileTabNeedsConfirmation()
    {
        QStringList roles = UserCtlHarness::allRoles();
        roles.append(QStringLiteral("RL_USER_DELETE_REQUIRES_CONFIRM"));
        Screen h(roles);
        select(h.mobile, {6, 7});
        h.child<QAction>("actionRemoveMobile")->trigger();
        auto *wizard = h.screen->findChild<DeleteObjectWizard *>();
        QVERIFY(wizard);
        QCOMPARE(wizard->uids().size(), 2);
        QVERIFY(wizard->needVerify());
        // Entering the confirmation page asks the server for the confirmers' templates.
        wizard->next();
        QCOMPARE(h.sent(command::ExecSql).size(), 1);
        wizard->close();
    }

    void deleteKeyWithoutSelectionDoesNothing()
    {
        Screen h;
        QTest::keyClick(h.users, Qt::Key_Delete);
        QVERIFY(h.screen->popups().isEmpty());
        QVERIFY(!h.screen->findChild<DeleteObjectWizard *>());
        // With a selection the same key opens the wizard.
        select(h.users, {4});
        QTest::keyClick(h.users, Qt::Key_Delete);
        QVERIFY(h.screen->findChild<DeleteObjectWizard *>());
    }
};

QTEST_MAIN(TestUserCtlBlocking)
#include "tst_userctlblocking.moc"
