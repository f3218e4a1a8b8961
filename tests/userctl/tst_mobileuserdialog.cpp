// The mobile user dialog on the users screen: how it is opened, the roles it offers, and the
// hand-over of credentials (one reset per dialog, then the same password by e-mail and by the
// clipboard) through the screen's queue to the scripted server, with the server's refusals.
#include "userctlharness.h"

#include <src/mobileuserproperties.h>
#include <src/mobileuserpropertiesdialog.h>
#include <src/userroles.h>
#include <tests/support/modalanswerer.h>

#include <host/gui/widgets/parameterizededit.h>
#include <host/gui/widgets/zractionstoolbar.h>
#include <host/gui/widgets/zrcombobox.h>
#include <shared/emailmessage.h>
#include <shared/inheritdata.h>
#include <shared/metatypes.h>

#include <QApplication>
#include <QClipboard>
#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

namespace {

constexpr TYPE_ID PetrovUid = 10;  // linked to an employee with an address
constexpr TYPE_ID SidorovUid = 12; // linked to an employee without one
constexpr TYPE_ID GhostUid = 13;   // linked to an employee deleted since
const QString PetrovLogin = QStringLiteral("petrov@firm.ru");
const QString Sentinel = QStringLiteral("nothing handed over");

zeral::ObjectInfo mobileUser(TYPE_ID uid, const QString &login, TYPE_ID workerUid)
{
    zeral::ObjectInfo user = UserCtlHarness::user(uid, login, "RT_MOBILE");
    zeral::_INHERIT_DATA link;
    link.parent = uid;
    link.child = workerUid;
    link.linkType = zeral::INHERIT_WORKER_USER;
    user.children.insert(zeral::INHERIT_WORKER_USER, link);
    return user;
}

void storeSite()
{
    UserCtlHarness::storeUsers({UserCtlHarness::user(2, "admin", "RT_ADMINISTRATOR"),
                                mobileUser(PetrovUid, PetrovLogin, 50),
                                mobileUser(SidorovUid, "sidorov@firm.ru", 51),
                                mobileUser(GhostUid, "ghost@firm.ru", 52)});
    zeral::ObjectInfo petrov = testing::makeWorker(50, "Петров", "Пётр");
    petrov.parameters.insert(QStringLiteral("PT_EMAIL"), PetrovLogin);
    zeral::LocalStorage *store = zeral::LocalStorage::instance();
    store->applyChanged(QStringLiteral("subject"),
                        {petrov, testing::makeWorker(51, "Сидоров", "Иван")});
    store->applyChanged(QStringLiteral("db"),
                        {testing::makeDatabase(100, {{"PT_MOBILE_HOST", "m.firm.ru"},
                                                     {"PT_MOBILE_PORT", "8443"},
                                                     {"PT_PASSWORD_MIN_LENGTH", "12"}})});
}

QString md5(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

// The login and password an auth data text carries; also checks where it leads.
QPair<QString, QString> decode(const QString &authData)
{
    const QJsonObject json
        = QJsonDocument::fromJson(QByteArray::fromBase64(authData.toLatin1())).object();
    if (json.value("host").toString() != QLatin1String("m.firm.ru")
        || json.value("port").toInt() != 8443)
        return {};
    return {json.value("user").toString(), json.value("passw").toString()};
}

// The shown dialog, over the screen or, when the studio asked, over nothing.
MobileUserPropertiesDialog *openDialog()
{
    for (QWidget *widget : QApplication::allWidgets()) {
        if (auto *dialog = qobject_cast<MobileUserPropertiesDialog *>(widget);
            dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

QPointer<MobileUserPropertiesDialog> openFromList(UserCtlHarness &h, TYPE_ID uid)
{
    UserCtlHarness::select(h.mobile, {uid});
    h.child("actionPropertiesMobile")->trigger();
    return openDialog();
}

// What one hand-over asked: nothing, or the question with its buttons.
struct Question
{
    bool asked = false;
    QString title, text;
    bool defaultNo = false;
};

// Runs a hand-over ("email" or "clipboard") through the button's menu, answering the
// question, if one comes, with `answer`.
Question runHandOver(MobileUserPropertiesDialog *dialog, const QString &way,
                     QMessageBox::StandardButton answer)
{
    Question question;
    ModalAnswerer answerer([&question, answer](QWidget *modal) {
        auto *box = qobject_cast<QMessageBox *>(modal);
        if (!box) {
            modal->close();
            return;
        }
        question = {true, box->windowTitle(), box->text(),
                    box->defaultButton() == box->button(QMessageBox::No)};
        box->button(answer)->click();
    });
    const QList<QAction *> entries = dialog->toolBar()->actions().first()->menu()->actions();
    entries.at(way == QLatin1String("email") ? 0 : 1)->trigger();
    return question;
}

// Every line logged while it lives.
struct LogCapture
{
    LogCapture() { previous = qInstallMessageHandler(&LogCapture::record); }
    ~LogCapture()
    {
        qInstallMessageHandler(previous);
        lines().clear();
    }
    static QStringList &lines()
    {
        static QStringList logged;
        return logged;
    }
    static void record(QtMsgType, const QMessageLogContext &, const QString &text)
    {
        lines() << text;
    }
    QtMessageHandler previous = nullptr;
};

int firstSent(const UserCtlHarness &h, const char *name)
{
    const QList<Command> &sent = h.server.sent();
    for (int i = 0; i < sent.size(); ++i) {
        if (sent.at(i).name == QLatin1String(name))
            return i;
    }
    return -1;
}

void answerWith(UserCtlHarness &h, const char *name, qint32 status, const QString &reason = {})
{
    h.server.script(QLatin1String(name), [status, reason](const Command &request) {
        return status == zeral::proto::StatusOk ? Command::answer(request, status)
                                                : Command::failure(request, status, reason);
    });
}

} // namespace

class TestMobileUserDialog : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        storeSite();
        QGuiApplication::clipboard()->setText(Sentinel);
    }
    void cleanup()
    {
        if (QWidget *dialog = openDialog())
            dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void openers_data()
    {
        QTest::addColumn<QString>("way");
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QString>("title");
        QTest::addRow("action") << "action" << PetrovUid << "Свойства пользователя " + PetrovLogin;
        QTest::addRow("Return") << "Return" << PetrovUid << "Свойства пользователя " + PetrovLogin;
        QTest::addRow("double click")
            << "double click" << PetrovUid << "Свойства пользователя " + PetrovLogin;
        QTest::addRow("command") << "command" << PetrovUid
                                 << "Свойства пользователя " + PetrovLogin;
        // A uid the store doesn't hold opens on an empty user.
        QTest::addRow("command, unknown uid")
            << "command" << TYPE_ID(999) << "Свойства пользователя ";
    }
    void openers()
    {
        QFETCH(QString, way);
        QFETCH(TYPE_ID, uid);
        UserCtlHarness h;
        h.answerTemplates();
        UserCtlHarness::select(h.mobile, {uid});
        if (way == QLatin1String("action")) {
            h.child("actionPropertiesMobile")->trigger();
        } else if (way == QLatin1String("Return")) {
            QTest::keyClick(h.mobile, Qt::Key_Return);
        } else if (way == QLatin1String("double click")) {
            emit h.mobile->doubleClicked(h.mobile->selectionModel()->selectedRows().first());
        } else {
            Command command
                = Command::named(QLatin1String(zeral::proto::studio::ShowMobileUserProperties));
            command.type = zeral::proto::NamedCommand;
            command.data = ZRDataStream::pack(qint32(uid));
            qint32 status = -1;
            h.server.send(command, [&status](Command &answer) { status = answer.status; });
            QTRY_COMPARE(status, zeral::proto::StatusOk);
        }
        QPointer<MobileUserPropertiesDialog> dialog = openDialog();
        QVERIFY(dialog);
        QTEST(dialog->windowTitle(), "title");
        QVERIFY(dialog->isModal());
        QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
        MobileUserProperties *tab = dialog->mobilePropertiesPage();
        QCOMPARE(tab->isEnabled(), uid == PetrovUid);
        QCOMPARE(tab->findChild<ParameterizedEdit *>("loginEdit")->text(),
                 uid == PetrovUid ? PetrovLogin : QString());
        QCOMPARE(dialog->isSaveButtonShown(), false);
        // The rights of the user are read for the dialog.
        QList<TYPE_ID> asked;
        unpack(h.sent(command::GetPermissions).last().data, asked);
        QCOMPARE(asked, QList<TYPE_ID>{uid == PetrovUid ? uid : TYPE_ID(0)});
    }

    void rolesAndButton()
    {
        UserCtlHarness h;
        h.answerTemplates();
        QPointer<MobileUserPropertiesDialog> dialog = openFromList(h, PetrovUid);
        QVERIFY(dialog);
        h.answerTemplates();
        auto *selector = dialog->rolesPage()->findChild<ZRComboBox *>("roleTemplateSelector");
        QStringList offered;
        for (int i = 0; i < selector->count(); ++i)
            offered << selector->itemData(i).toString();
        offered.sort();
        QCOMPARE(offered, (QStringList{"RT_MOBILE", "RT_MOBILE_CHIEF"}));
        QVERIFY(dialog->permissionsPage());

        QAction *button = dialog->toolBar()->actions().first();
        QCOMPARE(button->text(), QStringLiteral("Передать логин/пароль"));
        QStringList entries;
        for (const QAction *entry : button->menu()->actions())
            entries << entry->text();
        QCOMPARE(entries, (QStringList{"Отправить учетные данные по e-mail",
                                       "Сохранить учетные данные в буфер обмена"}));
        auto *toolButton = qobject_cast<QToolButton *>(dialog->toolBar()->widgetForAction(button));
        QVERIFY(toolButton);
        QCOMPARE(toolButton->popupMode(), QToolButton::InstantPopup);
        // The button's own action hands nothing over.
        button->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), Sentinel);
    }

    // Each step is a hand-over, with the answer to the question it must ask, or none when
    // it must not ask.
    void handOver_data()
    {
        QTest::addColumn<QStringList>("steps");
        QTest::addRow("refused") << QStringList{"clipboard No"};
        QTest::addRow("refused by e-mail")
            << QStringList{"email No", "clipboard Yes", "email", "clipboard"};
        QTest::addRow("clipboard first") << QStringList{"clipboard Yes", "email", "clipboard"};
        QTest::addRow("e-mail first") << QStringList{"email Yes", "email", "clipboard"};
    }
    void handOver()
    {
        QFETCH(QStringList, steps);
        LogCapture log;
        UserCtlHarness h;
        answerWith(h, command::UpdateObject, zeral::proto::StatusOk);
        answerWith(h, command::SendEmail, zeral::proto::StatusOk);
        h.answerTemplates();
        QPointer<MobileUserPropertiesDialog> dialog = openFromList(h, PetrovUid);
        QVERIFY(dialog);

        QStringList handedOver; // every auth data, from the clipboard and the mails
        int mails = 0;
        bool held = false;
        for (const QString &step : qAsConst(steps)) {
            const QStringList parts = step.split(' ');
            const bool ask = parts.size() == 2;
            const bool yes = ask && parts.at(1) == QLatin1String("Yes");
            const Question question
                = runHandOver(dialog, parts.at(0), yes ? QMessageBox::Yes : QMessageBox::No);
            QCOMPARE(question.asked, ask);
            if (ask) {
                QCOMPARE(question.title, QStringLiteral("Генерация пароля"));
                QCOMPARE(question.text, "Для пользователя " + PetrovLogin
                                            + ", будет создан новый пароль\nПродолжить?");
                QVERIFY(question.defaultNo);
            }
            held = held || yes;
            if (!held)
                continue;
            if (parts.at(0) == QLatin1String("email")) {
                ++mails;
                QTRY_COMPARE(h.sent(command::SendEmail).size(), mails);
                zeral::_EMAIL_MESSAGE mail;
                QString operatorLogin;
                unpack(h.sent(command::SendEmail).last().data, mail, operatorLogin);
                QCOMPARE(mail.to, PetrovLogin);
                QCOMPARE(mail.parameters.value("GREETINGS").toString(),
                         QStringLiteral("Петров Пётр"));
                handedOver << mail.parameters.value("TOKEN").toString();
            } else {
                handedOver << QGuiApplication::clipboard()->text();
                QCOMPARE(dialog->messageLine()->text(),
                         QStringLiteral("Данные скопированы в буфер обмена"));
            }
        }

        const QList<Command> resets = h.sent(command::UpdateObject);
        QCOMPARE(resets.size(), held ? 1 : 0);
        if (!held) {
            QCOMPARE(QGuiApplication::clipboard()->text(), Sentinel);
            QVERIFY(h.sent(command::SendEmail).isEmpty());
            return;
        }
        // The reset writes the hash and nothing else, before any mail goes.
        const SavedObject reset(resets.first());
        QCOMPARE(reset.uid, PetrovUid);
        QCOMPARE(reset.parameters.keys(), QStringList{"PT_PASSHASH"});
        if (mails > 0)
            QVERIFY(firstSent(h, command::UpdateObject) < firstSent(h, command::SendEmail));
        handedOver.removeDuplicates();
        QCOMPARE(handedOver.size(), 1);
        const auto [login, password] = decode(handedOver.first());
        QCOMPARE(login, PetrovLogin);
        QVERIFY(password.size() >= 12);
        QCOMPARE(reset.parameters.value("PT_PASSHASH"), md5(password));
        // Neither the password nor the text that carries it is ever logged.
        QVERIFY(!LogCapture::lines().isEmpty());
        for (const QString &line : qAsConst(LogCapture::lines()))
            QVERIFY2(!line.contains(password) && !line.contains(handedOver.first()),
                     qPrintable(line));
    }

    // The password lives with its dialog: the next one asks again and makes another.
    void newDialogNewReset()
    {
        UserCtlHarness h;
        answerWith(h, command::UpdateObject, zeral::proto::StatusOk);
        h.answerTemplates();
        QStringList passwords;
        for (int opening = 0; opening < 2; ++opening) {
            QPointer<MobileUserPropertiesDialog> dialog = openFromList(h, PetrovUid);
            QVERIFY(dialog);
            QVERIFY(runHandOver(dialog, "clipboard", QMessageBox::Yes).asked);
            QVERIFY(!runHandOver(dialog, "clipboard", QMessageBox::Yes).asked);
            passwords << decode(QGuiApplication::clipboard()->text()).second;
            QTRY_COMPARE(h.sent(command::UpdateObject).size(), opening + 1);
            dialog->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(!dialog);
        }
        QVERIFY(passwords.at(0) != passwords.at(1));
        QCOMPARE(SavedObject(h.sent(command::UpdateObject).last()).parameters.value("PT_PASSHASH"),
                 md5(passwords.at(1)));
    }

    // What the operator reads when the server refuses, and what is left.
    void refusals_data()
    {
        QTest::addColumn<TYPE_ID>("uid");
        QTest::addColumn<QString>("refused");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("address");
        const QString noMail = QStringLiteral(
            "Ошибка отправки параметров авторизации на e-mail : Нет связи с базой");
        QTest::addRow("reset refused")
            << PetrovUid << command::UpdateObject
            << "Ошибка сброса пароля пользователя petrov@firm.ru: Нет связи с базой" << PetrovLogin;
        QTest::addRow("employee without address")
            << SidorovUid << command::SendEmail << noMail << QString();
        QTest::addRow("employee deleted") << GhostUid << command::SendEmail << noMail << QString();
    }
    void refusals()
    {
        QFETCH(TYPE_ID, uid);
        QFETCH(QString, refused);
        UserCtlHarness h;
        answerWith(h, command::UpdateObject, zeral::proto::StatusOk);
        answerWith(h, command::SendEmail, zeral::proto::StatusOk);
        h.server.script(refused, [](const Command &request) {
            return Command::failure(request, zeral::proto::StatusInternal,
                                    QStringLiteral("Нет связи с базой"));
        });
        h.answerTemplates();
        QPointer<MobileUserPropertiesDialog> dialog = openFromList(h, uid);
        QVERIFY(dialog);
        QFETCH(QString, address);
        QCOMPARE(dialog->findChild<QWidget *>("wrongEmailWidget")->isVisibleTo(dialog),
                 address.isEmpty());
        QVERIFY(runHandOver(dialog, "email", QMessageBox::Yes).asked);
        QFETCH(QString, shown);
        QTRY_VERIFY(dialog->messageLine()->text().contains(shown));
        QTRY_VERIFY(h.sent(command::SendEmail).size() == 1);
        zeral::_EMAIL_MESSAGE mail;
        QString operatorLogin;
        unpack(h.sent(command::SendEmail).first().data, mail, operatorLogin);
        QCOMPARE(mail.to, address);

        // The password stays; after a refused reset each hand-over says it won't let in.
        runHandOver(dialog, "clipboard", QMessageBox::Yes);
        QCOMPARE(decode(QGuiApplication::clipboard()->text()).second,
                 decode(mail.parameters.value("TOKEN").toString()).second);
        QCOMPARE(dialog->messageLine()->text().startsWith("Ошибка сохранения пароля"),
                 refused == QLatin1String(command::UpdateObject));
    }

    // Closed before the answer: nobody is told, and the queue goes on.
    void closedBeforeTheAnswer()
    {
        UserCtlHarness h;
        h.answerTemplates();
        QPointer<MobileUserPropertiesDialog> dialog = openFromList(h, PetrovUid);
        QVERIFY(dialog);
        runHandOver(dialog, "email", QMessageBox::Yes);
        QCOMPARE(h.sent(command::UpdateObject).size(), 1);
        dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!dialog);
        h.server.answerFailure(h.sent(command::UpdateObject).first(), zeral::proto::StatusInternal,
                               QStringLiteral("Нет связи"));
        QTRY_COMPARE(h.sent(command::SendEmail).size(), 1);
        h.server.answerOk(h.sent(command::SendEmail).first());
        QCoreApplication::processEvents();
        QVERIFY(h.screen);
        QCOMPARE(h.sent(command::UpdateObject).size(), 1);
    }
};

QTEST_MAIN(TestMobileUserDialog)
#include "tst_mobileuserdialog.moc"
