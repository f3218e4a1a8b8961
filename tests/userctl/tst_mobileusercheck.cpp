// The check page of the new-mobile-users wizard: its table, the chain of tasks it makes for
// each person, the credentials inside them, and the whole wizard opened by the studio's
// command and run through the users screen's queue to the scripted server, with a failure on
// the way.
#include "mobilewizardfixture.h"
#include "userctlharness.h"

#include <src/wizards/userprogresswizardpage.h>
#include <tests/support/modalanswerer.h>

#include <host/core/passhash.h>
#include <shared/maildelivery.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QCheckBox>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMessageBox>
#include <QRadioButton>
#include <QSignalSpy>
#include <QToolButton>

using namespace mobilefixture;

namespace {

const QList<TYPE_ID> People{Ivanov, Petrov, Kuznetsov};

QJsonObject decodeAuthData(const QString &authData)
{
    return QJsonDocument::fromJson(QByteArray::fromBase64(authData.toLatin1())).object();
}

QString taskProperty(const zeral::TaskInfo &task, const char *key)
{
    return task.data.value(QStringLiteral("property-") + QLatin1String(key)).toString();
}

NewMobileUserWizard *openWizard()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *wizard = qobject_cast<NewMobileUserWizard *>(widget))
            return wizard;
    }
    return nullptr;
}

} // namespace

class TestMobileUserCheck : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        fillStore();
        UserCtlHarness::logIn(UserCtlHarness::allRoles());
    }
    void cleanup() { zeral::LocalStorage::instance()->clear(); }

    void model()
    {
        MobileUserCheckModel model;
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setUids({Petrov, Sidorov});
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QStringLiteral("ФИО"));
        QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), QStringLiteral("e-mail"));
        QCOMPARE(model.index(0, 1).data().toString(), QStringLiteral("petrov@romashka.ru"));
        QCOMPARE(model.index(1, 1).data().toString(), QString());
        QVERIFY(model.index(0, 0).data().toString().contains(QStringLiteral("Петров")));
        QCOMPARE(model.index(0, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
        QVERIFY(!model.index(0, 1).data(Qt::CheckStateRole).isValid());
        QVERIFY(!model.index(0, 0).data(Qt::EditRole).isValid());
        QVERIFY(model.flags(model.index(0, 0)).testFlag(Qt::ItemIsUserCheckable));
        QVERIFY(!model.flags(model.index(0, 1)).testFlag(Qt::ItemIsUserCheckable));

        QVERIFY(!model.setData(model.index(0, 1), Qt::Checked, Qt::CheckStateRole));
        QVERIFY(!model.setData(model.index(0, 0), Qt::Checked, Qt::EditRole));
        QVERIFY(model.setData(model.index(1, 0), Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(model.checkedUids(), QSet<unsigned int>{Sidorov});
        model.checkAll();
        QCOMPARE(model.checkedUids(), (QSet<unsigned int>{Petrov, Sidorov}));
        model.uncheckAll();
        QVERIFY(model.checkedUids().isEmpty());
        QCOMPARE(changed.size(), 3);
        // A new list starts with every box off.
        model.checkAll();
        model.setUids({Ivanov});
        QVERIFY(model.checkedUids().isEmpty());
    }

    void chain_data()
    {
        QTest::addColumn<int>("people");
        QTest::addColumn<bool>("rights"); // access objects and reports in the store
        QTest::addColumn<bool>("clipboard");
        QTest::addColumn<bool>("email");
        QTest::addColumn<bool>("chief");
        QTest::addRow("one, no rights, clipboard") << 1 << false << true << false << false;
        QTest::addRow("one, rights, clipboard and mail") << 1 << true << true << true << false;
        QTest::addRow("one, nothing handed over") << 1 << false << false << false << false;
        QTest::addRow("three, rights, mail") << 3 << true << false << true << false;
        QTest::addRow("three, no rights, no mail") << 3 << false << false << false << false;
        QTest::addRow("three chiefs, rights, mail") << 3 << true << false << true << true;
    }
    void chain()
    {
        QFETCH(int, people);
        QFETCH(bool, rights);
        QFETCH(bool, clipboard);
        QFETCH(bool, email);
        QFETCH(bool, chief);
        if (rights) {
            zeral::LocalStorage::instance()->applyChanged(
                QStringLiteral("placing"), {unit(20, "OT_PLACING", "Проходная", 0),
                                            unit(21, "OT_TERM_ZR_NOVA", "Вход", 20)});
            zeral::LocalStorage::instance()->applyChanged(
                QStringLiteral("report"), {unit(30, "OT_REPORT", "Табель", 0)});
            zeral::LocalStorage::instance()->applyChanged(
                QStringLiteral("orgstructure"), {unit(6, "OT_DEPARTMENT", "Охрана", Firm)});
        }
        NewMobileUserWizard wizard;
        wizard.setCheckedEmployees(People.mid(0, people));
        wizard.show();
        QVERIFY(QTest::qWaitForWindowExposed(&wizard));
        wizard.findChild<QRadioButton *>(chief ? "rbMobileChief" : "rbMobileEmployee")
            ->setChecked(true);
        while (wizard.currentId() != NewMobileUserWizard::CheckUserPage)
            next(&wizard);

        MobileUserChekWizardPage *page = wizard.checkPage();
        QList<zeral::TaskInfo> tasks;
        QList<zeral::TaskInfo> gathered;
        connect(page, &MobileUserChekWizardPage::appendTask, this,
                [&tasks](const zeral::TaskInfo &task) { tasks.append(task); });
        auto *clipboardBox = page->findChild<QCheckBox *>("cbSaveToClipboard");
        QCOMPARE(clipboardBox->isVisible(), people == 1);
        QCOMPARE(clipboardBox->isChecked(), people == 1);
        QVERIFY(!page->isComplete());
        page->findChild<QToolButton *>("tbCheckAll")->click();
        QVERIFY(page->isComplete());
        if (people == 1)
            clipboardBox->setChecked(clipboard);
        page->findChild<QCheckBox *>("cbSendEmail")->setChecked(email);
        QCOMPARE(next(&wizard), int(NewMobileUserWizard::ProgressPage));

        // One task of each permission page passed: access objects, departments for a chief,
        // reports.
        const int permissionTasks = rights ? (chief ? 3 : 2) : 0;
        const bool clipboardTask = people == 1 && clipboard;
        const int perPerson = 2 + permissionTasks + (clipboardTask ? 1 : 0) + (email ? 1 : 0);
        QCOMPARE(tasks.size(), people * perPerson);
        const QList<unsigned int> order = page->chainUids();
        QCOMPARE(QSet<unsigned int>(order.cbegin(), order.cend()),
                 QSet<unsigned int>(People.cbegin(), People.cbegin() + people));

        QSet<QString> passwords;
        for (int person = 0; person < people; ++person) {
            const unsigned int uid = order.at(person);
            const QString address = emailOf(uid);
            const QList<zeral::TaskInfo> own = tasks.mid(person * perPerson, perPerson);
            for (const zeral::TaskInfo &task : own) {
                QCOMPARE(task.uid, TYPE_ID(0));
                QVERIFY(task.dependsOn.isEmpty());
            }
            const zeral::TaskInfo &create = own.at(0);
            QCOMPARE(create.type, QStringLiteral("create_object"));
            QCOMPARE(create.method, QStringLiteral("objectAdded"));
            QCOMPARE(create.data.value(QStringLiteral("object_type")).toString(),
                     QStringLiteral("OT_USER"));
            QCOMPARE(create.data.value(QStringLiteral("parent")).toInt(), 0);
            QCOMPARE(create.data.value(QStringLiteral("inherit-child-15")).toString(),
                     QString::number(uid));
            QCOMPARE(taskProperty(create, "PT_LOGIN"), address);
            QCOMPARE(taskProperty(create, "PT_NAME"), QStringLiteral("Имя"));
            QCOMPARE(taskProperty(create, "PT_SURNAME"),
                     zeral::LocalStorage::instance()
                         ->constObject(uid, QStringLiteral("subject"))
                         .parameters.value(QStringLiteral("PT_SURNAME")));
            QVERIFY(!create.data.contains(QStringLiteral("property-PT_PASSWORD_EXPIRED")));
            QVERIFY(!create.data.contains(QStringLiteral("property-PT_SET_PASSWORD")));
            QCOMPARE(create.startMessage, QStringLiteral("Добавление пользователя ") + address);
            QCOMPARE(create.errorMessage,
                     QStringLiteral("Ошибка добавления пользователя ") + address);

            const zeral::TaskInfo &prescribe = own.at(1);
            QCOMPARE(prescribe.type, QStringLiteral("prescribe"));
            QCOMPARE(prescribe.method, QStringLiteral("objectUpdated"));
            QCOMPARE(prescribe.data.value(QStringLiteral("PT_ROLETEMPLATE")).toString(),
                     chief ? QStringLiteral("RT_MOBILE_CHIEF") : QStringLiteral("RT_MOBILE"));

            // The same permission tasks for everybody, as copies that keep their number.
            const QList<zeral::TaskInfo> permissions = own.mid(2, permissionTasks);
            for (int i = 0; i < permissions.size(); ++i) {
                QCOMPARE(permissions.at(i).type, QStringLiteral("add_permissions"));
                if (person == 0)
                    gathered.append(permissions.at(i));
                else
                    QCOMPARE(permissions.at(i).id, gathered.at(i).id);
            }

            QString authData;
            int at = 2 + permissionTasks;
            if (clipboardTask) {
                const zeral::TaskInfo &copy = own.at(at++);
                QCOMPARE(copy.type, QStringLiteral("save_to_clipboard"));
                QCOMPARE(copy.startMessage,
                         QStringLiteral("Сохранение параметров авторизации %1 в буфер обмена")
                             .arg(address));
                authData = copy.data.value(QStringLiteral("text")).toString();
            }
            if (email) {
                const zeral::TaskInfo &mail = own.at(at++);
                QCOMPARE(mail.type, QStringLiteral("send_email"));
                QCOMPARE(mail.data.value(QStringLiteral("addr_to")).toString(), address);
                QVERIFY(mail.data.value(QStringLiteral("greetings")).toString().contains(
                    taskProperty(create, "PT_SURNAME")));
                if (!authData.isEmpty())
                    QCOMPARE(mail.data.value(QStringLiteral("auth_data")).toString(), authData);
                authData = mail.data.value(QStringLiteral("auth_data")).toString();
                QCOMPARE(mail.startMessage,
                         QStringLiteral("Отправка параметров авторизации на e-mail ") + address);
            }
            if (authData.isEmpty())
                continue;
            // The credentials: the address as login, the password whose hash the server got.
            const QJsonObject auth = decodeAuthData(authData);
            QCOMPARE(auth.value(QStringLiteral("user")).toString(), address);
            const QString password = auth.value(QStringLiteral("passw")).toString();
            QVERIFY(!password.isEmpty());
            QCOMPARE(PassHash::encrypt(password, QCryptographicHash::Md5),
                     taskProperty(create, "PT_PASSHASH"));
            passwords.insert(password);
        }
        if (email)
            QCOMPARE(passwords.size(), people);
    }

    void runThroughTheScreen_data()
    {
        QTest::addColumn<int>("failingRequest"); // -1: none fails
        QTest::addColumn<int>("made");
        QTest::addColumn<bool>("secondHalfMade");
        QTest::addColumn<bool>("reasonShown"); // the server's reason, for a refused mail too
        // Per person: creation, role template, e-mail.
        QTest::addRow("all made") << -1 << 3 << false << false;
        QTest::addRow("second creation refused") << 3 << 1 << false << true;
        QTest::addRow("second mail refused") << 5 << 2 << true << true;
    }
    void runThroughTheScreen()
    {
        QFETCH(int, failingRequest);
        QFETCH(int, made);
        QFETCH(bool, secondHalfMade);
        QFETCH(bool, reasonShown);
        UserCtlHarness h;
        fillStore();
        h.answerTemplates();
        h.server.clearSent();

        qint32 status = 0;
        Command open = Command::named(QStringLiteral("show:userctl:mobileuserwizards"));
        open.data = ZRDataStream::pack(QList<unsigned int>(People.cbegin(), People.cend()));
        h.server.send(open, [&status](Command &answer) { status = answer.status; });
        QTRY_VERIFY(openWizard());
        QCOMPARE(status, qint32(zeral::proto::StatusOk));
        QPointer<NewMobileUserWizard> wizard = openWizard();
        QVERIFY(QTest::qWaitForWindowExposed(wizard));
        QCOMPARE(wizard->windowModality(), Qt::ApplicationModal);
        QCOMPARE(wizard->selectPage()->checkedUids(),
                 QSet<unsigned int>(People.cbegin(), People.cend()));

        while (wizard->currentId() != NewMobileUserWizard::CheckUserPage)
            next(wizard);
        wizard->checkPage()->model()->checkAll();
        wizard->findChild<QCheckBox *>("cbSendEmail")->setChecked(true);
        QCOMPARE(next(wizard), int(NewMobileUserWizard::ProgressPage));
        const QList<unsigned int> order = wizard->checkPage()->chainUids();

        const QStringList kinds{command::AddObject, command::PrescribeRoleTemplate,
                                QStringLiteral("send_email")};
        const auto changes = [&h, &kinds] {
            QList<Command> found;
            for (const Command &command : h.server.sent()) {
                if (kinds.contains(command.name))
                    found.append(command);
            }
            return found;
        };
        const int total = failingRequest < 0 ? 9 : failingRequest + 1;
        for (int i = 0; i < total; ++i) {
            QTRY_COMPARE(changes().size(), i + 1);
            const Command request = changes().at(i);
            QCOMPARE(request.name, kinds.at(i % 3));
            if (i == failingRequest)
                h.server.answerFailure(request, 3, QStringLiteral("Отказ сервера"));
            else if (request.name == QLatin1String(command::AddObject))
                h.server.answerOk(request, ZRDataStream::pack(qint32(700 + i)));
            else if (request.name == QLatin1String("send_email"))
                h.server.answerOk(request, ZRDataStream::pack(qint64(100 + i), QStringLiteral("pending")));
            else
                h.server.answerOk(request);
        }
        UserProgressWizardPage *progress = wizard->progressPage();
        QTRY_VERIFY(progress->isComplete());
        // Nothing goes out after the failure.
        QTest::qWait(50);
        QCOMPARE(changes().size(), total);
        QCOMPARE(progress->createdUids().size(), made);

        const auto *note = progress->findChild<QLabel *>("noteLabel");
        QVERIFY(note->isVisible());
        const QStringList lines = note->text().split(QLatin1Char('\n'));
        QVERIFY2(lines.contains(QStringLiteral("Созданы: %1 из 3.").arg(made)),
                 qPrintable(note->text()));
        const auto lineOf = [&lines](const QString &start) {
            for (const QString &line : lines) {
                if (line.startsWith(start))
                    return line;
            }
            return QString();
        };
        const QString notMade = lineOf(QStringLiteral("Не созданы: "));
        const QString halfMade = lineOf(QStringLiteral("Создан, но настроен не полностью: "));
        for (int person = 0; person < 3; ++person) {
            const QString address = emailOf(order.at(person));
            QCOMPARE(notMade.contains(address), person >= made);
            QCOMPARE(halfMade.contains(address), secondHalfMade && person == 1);
        }
        QCOMPARE(note->text().contains(QStringLiteral("Отказ сервера")), reasonShown);

        // What the server later says of the mails of the people made in full shows too.
        if (failingRequest < 0) {
            const QDateTime retry = QDateTime::currentDateTimeUtc().addSecs(60);
            const QStringList states{"sent", "pending", "failed"};
            for (int person = 0; person < 3; ++person) {
                zeral::MailDelivery delivery;
                delivery.id = 100 + 3 * person + 2; // the id its queuing answer gave
                delivery.recipient = emailOf(order.at(person));
                delivery.state = states.at(person);
                delivery.error = person ? QStringLiteral("Почтовый сервер недоступен") : QString();
                delivery.nextAttempt = person == 1 ? retry : QDateTime();
                h.server.push(QStringLiteral("mail.delivery"), ZRDataStream::pack(delivery));
            }
            QTRY_VERIFY(note->text().contains(QStringLiteral("доставлено 1 из 3")));
            const QStringList mailLines = note->text().split(QLatin1Char('\n'));
            const auto mailLine = [&mailLines](const QString &start) {
                for (const QString &line : mailLines) {
                    if (line.startsWith(start))
                        return line;
                }
                return QString();
            };
            QVERIFY(mailLine(QStringLiteral("Не отправлены, сервер повторит попытку — Почтовый сервер "
                                     "недоступен: "))
                        .contains(emailOf(order.at(1))));
            QVERIFY(mailLine(QStringLiteral("Не доставлены, попытки прекращены"))
                        .contains(emailOf(order.at(2))));
        }
        wizard->close();
        QTRY_VERIFY(!wizard);
    }

    void withoutTheRightToLinkDepartments_data()
    {
        QTest::addColumn<bool>("byCommand");
        QTest::addRow("the tab's action") << false;
        QTest::addRow("the studio's command") << true;
    }
    void withoutTheRightToLinkDepartments()
    {
        QFETCH(bool, byCommand);
        UserCtlHarness h(UserCtlHarness::allRolesBut(QStringLiteral("RL_ROLE_LINKSUBDIV")));
        QString title;
        QString text;
        ModalAnswerer answerer([&](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            QVERIFY(box);
            title = box->windowTitle();
            text = box->text();
            QCOMPARE(box->icon(), QMessageBox::Critical);
            box->reject();
        });
        if (byCommand) {
            Command open = Command::named(QStringLiteral("show:userctl:mobileuserwizards"));
            open.data = ZRDataStream::pack(QList<unsigned int>{Petrov});
            h.server.send(open, [](Command &) {});
        } else {
            h.child("actionAddMobileUser")->trigger();
        }
        QTRY_VERIFY(answerer.answered());
        QCOMPARE(title, QStringLiteral("Добавление"));
        QCOMPARE(text, QStringLiteral("Ошибка добавления пользователя\nНет доступа"));
        QVERIFY(!openWizard());
    }
};

QTEST_MAIN(TestMobileUserCheck)
#include "tst_mobileusercheck.moc"
