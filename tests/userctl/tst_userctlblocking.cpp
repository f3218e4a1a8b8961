// Blocking and deleting from the user lists: the question and the state written for each kind
// of selection, the popups of the outcome, a failed save that takes only its user's tasks,
// and "root", who is never handed to the deletion wizard.
#include "userctlharness.h"

#include <tests/support/modalanswerer.h>

#include <host/gui/wizards/deleteobjectwizard.h>

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

class TestUserCtlBlocking : public QObject
{
    Q_OBJECT
    using H = UserCtlHarness;

    // Answers the block question with Yes and keeps what it asked.
    struct Question : ModalAnswerer
    {
        Question()
            : ModalAnswerer([this](QWidget *modal) {
                auto *box = qobject_cast<QMessageBox *>(modal);
                QVERIFY(box);
                asked = box->windowTitle() + QLatin1Char('|') + box->text();
                QCOMPARE(static_cast<QAbstractButton *>(box->defaultButton()),
                         box->button(QMessageBox::No));
                box->button(QMessageBox::Yes)->click();
            })
        {}
        QString asked;
    };

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("gui.plugin.userctl.warning=false"));
    }
    void init()
    {
        H::storeUsers(
            {H::user(1, "root", "RT_SUPERVISOR"), H::user(3, "ivanov", "RT_OPERATOR", "b"),
             H::user(4, "petrov", "RT_OPERATOR"), H::user(5, "sidorov", "RT_OPERATOR", "B"),
             H::user(6, "mob", "RT_MOBILE", "B"), H::user(7, "mob2", "RT_MOBILE")});
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
        H h;
        h.answerTemplates();
        H::select(mobileTab ? h.mobile : h.users, selection);
        Question answerer;
        const qint64 before
            = QDateTime(QDate::currentDate(), QTime::currentTime(), Qt::UTC).toSecsSinceEpoch();
        h.child(mobileTab ? "actionBlockMobileChange" : "actionBlockChange")->trigger();
        QCOMPARE(answerer.asked, QStringLiteral("Блокировка пользователей|") + question);

        // One save per user, each with every parameter of the stored user.
        QList<TYPE_ID> savedUids;
        for (int i = 0; i < selection.size(); ++i) {
            QCOMPARE(h.sent(command::UpdateObject).size(), i + 1);
            const SavedObject s(h.sent(command::UpdateObject).at(i));
            savedUids.append(s.uid);
            QCOMPARE(s.type + QString::number(s.parent), QStringLiteral("OT_USER40"));
            QHash<QString, QString> expected
                = zeral::LocalStorage::instance()->constObject(s.uid, "user").parameters;
            expected.insert(QStringLiteral("PT_OBJECTSTATE"), state);
            const QString date = s.parameters.value(QStringLiteral("PT_OBJECTSTATEDATE"));
            expected.insert(QStringLiteral("PT_OBJECTSTATEDATE"), date);
            QCOMPARE(s.parameters, expected);
            // The local wall-clock time, marked as UTC.
            QVERIFY2(date.toLongLong() >= before && date.toLongLong() <= before + 5,
                     qPrintable(date));
            h.server.answerOk(h.sent(command::UpdateObject).at(i));
        }
        std::sort(savedUids.begin(), savedUids.end());
        QCOMPARE(savedUids, selection);
        QTRY_COMPARE(h.screen->popups().size(), selection.size());
        const QString login = selection.first() == 3 ? "ivanov" : mobileTab ? "mob" : "petrov";
        QVERIFY(h.popupTexts().contains(
            QStringLiteral("Изменение блокировки пользователя %1 успешно").arg(login)));
    }

    void failedSaveDropsOnlyThatUsersTasks()
    {
        H h;
        h.answerTemplates();
        H::select(h.users, {3, 4});
        Question answerer;
        h.child("actionBlockChange")->trigger();
        const Command first = h.sent(command::UpdateObject).at(0);
        const TYPE_ID failing = SavedObject(first).uid;
        // Another window's change of the same user waits behind the block.
        zeral::TaskInfo later;
        later.type = QStringLiteral("save_object");
        later.uid = failing;
        h.screen->addTask(later);

        h.server.answerFailure(first, zeral::proto::StatusForbidden, QStringLiteral("нет прав"));
        QCOMPARE(h.sent(command::UpdateObject).size(), 2);
        QCOMPARE(SavedObject(h.sent(command::UpdateObject).at(1)).uid, failing == 3 ? 4u : 3u);
        QTRY_COMPARE(h.popupTexts(), QStringList{"Ошибка изменения блокировки пользователя"});
        QCOMPARE(h.screen->popups().first()->messageIcon(), MessageWidget::Critical);

        h.server.answerOk(h.sent(command::UpdateObject).at(1));
        QTRY_COMPARE(h.screen->popups().size(), 2);
        QCOMPARE(h.sent(command::UpdateObject).size(), 2); // the dropped task never went out
    }

    void deleting_data()
    {
        QTest::addColumn<bool>("mobileTab");
        QTest::addColumn<QList<TYPE_ID>>("selection");
        QTest::addColumn<bool>("rootPopup");
        QTest::addColumn<QList<TYPE_ID>>("wizardUids");
        QTest::addRow("root alone") << false << QList<TYPE_ID>{1} << true << QList<TYPE_ID>{};
        QTest::addRow("root and another")
            << false << QList<TYPE_ID>{1, 4} << true << QList<TYPE_ID>{4};
        QTest::addRow("others") << false << QList<TYPE_ID>{3, 4} << false << QList<TYPE_ID>{3, 4};
        QTest::addRow("mobile, confirmed")
            << true << QList<TYPE_ID>{6, 7} << false << QList<TYPE_ID>{6, 7};
    }
    void deleting()
    {
        QFETCH(bool, mobileTab);
        QFETCH(QList<TYPE_ID>, selection);
        QFETCH(QList<TYPE_ID>, wizardUids);
        // The mobile row also asks for a second person's confirmation.
        H h(mobileTab ? H::allRoles() << QStringLiteral("RL_USER_DELETE_REQUIRES_CONFIRM")
                      : H::allRoles());
        h.answerTemplates();
        H::select(mobileTab ? h.mobile : h.users, selection);
        h.child(mobileTab ? "actionRemoveMobile" : "actionRemove")->trigger();
        QTEST(h.popupTexts().contains("Пользователь root не будет удален: запрещено удаление."),
              "rootPopup");
        auto *wizard = h.screen->findChild<DeleteObjectWizard *>();
        QCOMPARE(wizard != nullptr, !wizardUids.isEmpty());
        if (!wizard)
            return;
        QList<TYPE_ID> uids = wizard->uids();
        std::sort(uids.begin(), uids.end());
        QCOMPARE(uids, wizardUids);
        QVERIFY(wizard->isVisible() && wizard->isModal());
        QCOMPARE(wizard->windowTitle(), QStringLiteral("Мастер удаления пользователей"));
        QCOMPARE(wizard->needVerify(), mobileTab);
        // Entering the confirmation page asks the server for the confirmers' templates.
        if (mobileTab) {
            wizard->next();
            QCOMPARE(h.sent(command::ExecSql).size(), 1);
        }
        wizard->close();
    }

    void deleteKeyWithoutSelectionDoesNothing()
    {
        H h;
        h.answerTemplates();
        QTest::keyClick(h.users, Qt::Key_Delete);
        QVERIFY(h.screen->popups().isEmpty());
        QVERIFY(!h.screen->findChild<DeleteObjectWizard *>());
        // With a selection the same key opens the wizard.
        H::select(h.users, {4});
        QTest::keyClick(h.users, Qt::Key_Delete);
        QVERIFY(h.screen->findChild<DeleteObjectWizard *>());
    }
};

QTEST_MAIN(TestUserCtlBlocking)
#include "tst_userctlblocking.moc"
