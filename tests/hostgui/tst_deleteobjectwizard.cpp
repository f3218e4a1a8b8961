#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/wizards/baseprogresswizardpage.h>
#include <host/gui/wizards/deleteobjectwizard.h>
#include <host/gui/wizards/deleteverifywizardpage.h>
#include <shared/datasets.h>
#include <shared/metatypes.h>

#include <QListWidget>
#include <QSignalSpy>
#include <QtTest>

using zeral::TaskInfo;
using zeral::TEMPLATE_DATA;
using zeral::TYPE_ID;

namespace {

const TYPE_ID operatorUid = 1;

zeral::ObjectInfo user(TYPE_ID uid, const QString &login)
{
    zeral::ObjectInfo object;
    object.uid = uid;
    object.type = QStringLiteral("OT_USER");
    object.parameters.insert(QStringLiteral("PT_LOGIN"), login);
    return object;
}

TEMPLATE_DATA enrolledFinger()
{
    TEMPLATE_DATA finger;
    finger.format = FingerprintReader::SimulatedFormat;
    finger.data = SimulatedFingerprintReader::newTemplate();
    return finger;
}

// Answers every released task as the task queue would: success with the task's uid.
void answerTasks(DeleteObjectWizard *wizard, QList<TaskInfo> *tasks, TYPE_ID failingUid = 0)
{
    QObject::connect(
        wizard, &DeleteObjectWizard::appendTask, wizard, [tasks, failingUid](TaskInfo task) {
            tasks->append(task);
            const TYPE_ID result = task.uid == failingUid ? 0 : task.uid;
            QMetaObject::invokeMethod(task.receiver.data(), task.method.toLatin1().constData(),
                                      Qt::QueuedConnection, Q_ARG(zeral::TYPE_ID, result));
        });
}

} // namespace

class TestDeleteObjectWizard : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void oneTaskPerObject_data();
    void oneTaskPerObject();
    void verification();
};

void TestDeleteObjectWizard::initTestCase()
{
    zeral::LocalStorage::instance()->applyChanged(
        QLatin1String(zeral::USER_DATANAME),
        {user(operatorUid, QStringLiteral("operator")), user(11, QStringLiteral("ivanov")),
         user(12, QStringLiteral("petrov")), user(20, QStringLiteral("confirmer"))});
    AuthData::Identity identity;
    identity.user = QStringLiteral("operator");
    identity.userId = operatorUid;
    AuthData::set(identity);
}

void TestDeleteObjectWizard::oneTaskPerObject_data()
{
    QTest::addColumn<QList<TYPE_ID>>("uids");
    QTest::addColumn<TYPE_ID>("failingUid");
    QTest::addColumn<QStringList>("types");
    QTest::addColumn<QStringList>("names");

    const QString userType = QStringLiteral("OT_USER");
    QTest::addRow("two users") << QList<TYPE_ID>{11, 12} << TYPE_ID(0)
                               << QStringList{userType, userType}
                               << QStringList{QStringLiteral("ivanov"), QStringLiteral("petrov")};
    QTest::addRow("a failure doesn't stop the others")
        << QList<TYPE_ID>{11, 12} << TYPE_ID(11) << QStringList{userType, userType}
        << QStringList{QStringLiteral("ivanov"), QStringLiteral("petrov")};
    QTest::addRow("an object the store doesn't know")
        << QList<TYPE_ID>{77} << TYPE_ID(0) << QStringList{QString()}
        << QStringList{QStringLiteral("Объект №77")};
}

void TestDeleteObjectWizard::oneTaskPerObject()
{
    QFETCH(QList<TYPE_ID>, uids);
    QFETCH(TYPE_ID, failingUid);
    QFETCH(QStringList, types);
    QFETCH(QStringList, names);

    DeleteObjectWizard wizard;
    wizard.setUids(uids);
    QList<TaskInfo> tasks;
    answerTasks(&wizard, &tasks, failingUid);
    wizard.show();

    const auto *list = wizard.findChild<QListWidget *>(QStringLiteral("objectList"));
    QStringList shown;
    for (int row = 0; row < list->count(); ++row)
        shown.append(list->item(row)->text());
    QCOMPARE(shown, names);
    QVERIFY(tasks.isEmpty()); // nothing is deleted before the operator goes on

    wizard.next();
    QCOMPARE(wizard.currentId(), int(DeleteObjectWizard::ProgressPage));
    QTRY_VERIFY(wizard.progressPage()->isComplete());
    QCOMPARE(tasks.size(), uids.size());
    for (int i = 0; i < uids.size(); ++i) {
        QCOMPARE(tasks.at(i).type, QStringLiteral("delete_object"));
        QCOMPARE(tasks.at(i).uid, uids.at(i));
        QCOMPARE(tasks.at(i).data.value(QStringLiteral("object_type")).toString(), types.at(i));
    }
    QCOMPARE(wizard.progressPage()->failedCount(), failingUid ? 1 : 0);
}

void TestDeleteObjectWizard::verification()
{
    DeleteObjectWizard wizard;
    wizard.setUids({11});
    wizard.setNeedVerify(true);
    QList<TaskInfo> tasks;
    answerTasks(&wizard, &tasks);
    // The answer of the users screen to the request, in the order it sends it.
    const TEMPLATE_DATA operatorFinger = enrolledFinger();
    const TEMPLATE_DATA confirmerFinger = enrolledFinger();
    connect(&wizard, &DeleteObjectWizard::requestUserTemplatesForDelete, &wizard, [&] {
        emit wizard.variantsForVerify(QStringLiteral("Администратор"), 0, 1);
        emit wizard.uidsForVerify(0, 0, {operatorUid, 20});
        const QMultiHash<TYPE_ID, TEMPLATE_DATA> templates{{operatorUid, operatorFinger},
                                                           {20, confirmerFinger}};
        wizard.setTemplatesForVerify(templates);
        emit wizard.templatesForVerify(templates);
        emit wizard.startVerify();
    });
    QSignalSpy requested(&wizard, &DeleteObjectWizard::requestUserTemplatesForDelete);
    wizard.show();
    wizard.next();
    QCOMPARE(wizard.currentId(), int(DeleteObjectWizard::VerifyPage));
    QCOMPARE(requested.count(), 1);
    QVERIFY(!wizard.currentPage()->isComplete());

    auto *reader = static_cast<SimulatedFingerprintReader *>(
        wizard.verifyPage()->authorizationWidget()->reader());
    reader->touch(operatorFinger); // nobody confirms his own deletion
    QVERIFY(!wizard.currentPage()->isComplete());
    wizard.next();
    QCOMPARE(wizard.currentId(), int(DeleteObjectWizard::VerifyPage));
    QVERIFY(tasks.isEmpty());

    reader->touch(confirmerFinger);
    QVERIFY(wizard.currentPage()->isComplete());
    wizard.next();
    QTRY_VERIFY(wizard.progressPage()->isComplete());
    QCOMPARE(tasks.size(), 1);
    QCOMPARE(tasks.first().uid, TYPE_ID(11));
}

QTEST_MAIN(TestDeleteObjectWizard)
#include "tst_deleteobjectwizard.moc"
