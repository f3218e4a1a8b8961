#include <host/gui/wizards/baseprogresswizardpage.h>
#include <shared/metatypes.h>

#include <QLabel>
#include <QListWidget>
#include <QSignalSpy>
#include <QtTest>

using zeral::TaskInfo;
using zeral::TYPE_ID;

namespace {

TaskInfo makeTask(const QString &type, const QString &name)
{
    TaskInfo task;
    task.type = type;
    task.startMessage = QStringLiteral("start %1").arg(name);
    task.errorMessage = QStringLiteral("error %1").arg(name);
    return task;
}

// Answers released tasks the way the task queue's processors do: later, by a queued call of
// the task's method on its receiver. A "create_object" gets the next new uid, any other task
// its own uid, and the task at failAt gets 0.
class Processor : public QObject
{
public:
    Processor(BaseProgressWizardPage *page, int failAt)
        : m_failAt(failAt)
    {
        connect(page, &BaseProgressWizardPage::executeTask, this, [this](TaskInfo task) {
            if (m_outstanding)
                m_overlapped = true;
            m_outstanding = true;
            released.append(task);
            const bool fail = released.size() - 1 == m_failAt;
            const TYPE_ID result = fail                                          ? 0
                                   : task.type == QLatin1String("create_object") ? ++m_nextUid
                                                                                 : task.uid;
            QTimer::singleShot(0, this, [this, task, result] {
                m_outstanding = false;
                QVERIFY(QMetaObject::invokeMethod(
                    task.receiver.data(), task.method.toLatin1().constData(), Qt::QueuedConnection,
                    Q_ARG(zeral::TYPE_ID, result)));
            });
        });
    }

    QList<TaskInfo> released;
    bool overlapped() const { return m_overlapped; }

private:
    int m_failAt;
    TYPE_ID m_nextUid = 100;
    bool m_outstanding = false;
    bool m_overlapped = false;
};

// A page that made a task and wants its result, like the first page of a new-user wizard.
class ResultPage : public ZRWizardPage
{
public:
    QList<TYPE_ID> added;
    void objectAdded(TYPE_ID uid) override { added.append(uid); }
};

} // namespace

class TestBaseProgressWizardPage : public QObject
{
    Q_OBJECT
private slots:
    void chain_data();
    void chain();
    void holdsTasksUntilShown();
    void dropBeforeShown();
    void dropWhileTaskIsOut();
    void strayResultsAreIgnored_data();
    void strayResultsAreIgnored();
    void passesResultToTheTasksReceiver();
};

void TestBaseProgressWizardPage::chain_data()
{
    QTest::addColumn<QStringList>("kinds");
    QTest::addColumn<int>("failAt");
    QTest::addColumn<bool>("stopOnFailure");
    QTest::addColumn<QList<TYPE_ID>>("releasedUids");
    QTest::addColumn<BaseProgressWizardPage::State>("endState");

    const QString create = QStringLiteral("create_object");
    const QString save = QStringLiteral("save_object");
    const QString prescribe = QStringLiteral("prescribe");
    const QString permissions = QStringLiteral("add_permissions");
    using State = BaseProgressWizardPage::State;

    QTest::addRow("new user: the created uid reaches every later task")
        << QStringList{create, save, save, prescribe, permissions} << -1 << true
        << QList<TYPE_ID>{0, 101, 101, 101, 101} << State::Finished;
    QTest::addRow("two people: each chain gets its own uid")
        << QStringList{create, prescribe, permissions, create, prescribe, permissions} << -1 << true
        << QList<TYPE_ID>{0, 101, 101, 0, 102, 102} << State::Finished;
    QTest::addRow("failed create stops the run")
        << QStringList{create, prescribe, create, prescribe} << 0 << true << QList<TYPE_ID>{0}
        << State::Failed;
    QTest::addRow("failure in the middle stops the run")
        << QStringList{create, save, prescribe, permissions} << 2 << true
        << QList<TYPE_ID>{0, 101, 101} << State::Failed;
    QTest::addRow("without stop, a failed create skips only its own chain")
        << QStringList{create, prescribe, create, prescribe} << 0 << false
        << QList<TYPE_ID>{0, 0, 101} << State::Finished;
    QTest::addRow("without stop, a failed update doesn't hold the next object back")
        << QStringList{create, prescribe, create, prescribe} << 1 << false
        << QList<TYPE_ID>{0, 101, 0, 102} << State::Finished;
}

void TestBaseProgressWizardPage::chain()
{
    QFETCH(QStringList, kinds);
    QFETCH(int, failAt);
    QFETCH(bool, stopOnFailure);
    QFETCH(QList<TYPE_ID>, releasedUids);
    QFETCH(BaseProgressWizardPage::State, endState);

    BaseProgressWizardPage page;
    page.setStopOnFailure(stopOnFailure);
    Processor processor(&page, failAt);
    QSignalSpy finished(&page, &BaseProgressWizardPage::runFinished);
    for (int i = 0; i < kinds.size(); ++i)
        page.addTask(makeTask(kinds.at(i), QString::number(i)));

    page.initializePage();
    QVERIFY(!page.isComplete());
    QTRY_COMPARE(finished.count(), 1);

    QVERIFY(!processor.overlapped());
    QList<TYPE_ID> uids;
    for (const TaskInfo &task : qAsConst(processor.released)) {
        uids.append(task.uid);
        QCOMPARE(task.receiver.data(), &page);
        QCOMPARE(task.method, task.type == QLatin1String("create_object")
                                  ? QStringLiteral("objectAdded")
                                  : QStringLiteral("objectUpdated"));
    }
    QCOMPARE(uids, releasedUids);
    QCOMPARE(page.state(), endState);
    QVERIFY(page.isComplete());
    QCOMPARE(page.pendingCount(), 0);
    QCOMPARE(finished.first().first().toBool(), failAt < 0);

    if (failAt >= 0) {
        // The operator sees which task failed.
        const auto *log = page.findChild<QListWidget *>(QStringLiteral("taskLog"));
        QVERIFY(
            !log->findItems(QStringLiteral("error %1").arg(failAt), Qt::MatchExactly).isEmpty());
    }
}

void TestBaseProgressWizardPage::holdsTasksUntilShown()
{
    BaseProgressWizardPage page;
    QSignalSpy released(&page, &BaseProgressWizardPage::executeTask);
    page.addTask(makeTask(QStringLiteral("create_object"), QStringLiteral("a")));
    page.addTask(makeTask(QStringLiteral("save_object"), QStringLiteral("b")));
    QCoreApplication::processEvents();
    QCOMPARE(released.count(), 0);
    QVERIFY(!page.isComplete());

    page.initializePage();
    QCOMPARE(released.count(), 1); // the second waits for the result of the first
    QCOMPARE(page.pendingCount(), 1);
}

void TestBaseProgressWizardPage::dropBeforeShown()
{
    BaseProgressWizardPage page;
    QSignalSpy released(&page, &BaseProgressWizardPage::executeTask);
    QSignalSpy complete(&page, &QWizardPage::completeChanged);
    page.addTask(makeTask(QStringLiteral("create_object"), QStringLiteral("a")));
    const QString message = QStringLiteral("not verified");
    page.dropTaskQueue(message);
    page.initializePage();

    QCOMPARE(released.count(), 0);
    QCOMPARE(page.state(), BaseProgressWizardPage::State::Dropped);
    QVERIFY(page.isComplete());
    QVERIFY(complete.count() > 0);
    QCOMPARE(page.findChild<QLabel *>(QStringLiteral("statusLabel"))->text(), message);
}

void TestBaseProgressWizardPage::dropWhileTaskIsOut()
{
    BaseProgressWizardPage page;
    QSignalSpy released(&page, &BaseProgressWizardPage::executeTask);
    page.addTask(makeTask(QStringLiteral("create_object"), QStringLiteral("a")));
    page.addTask(makeTask(QStringLiteral("save_object"), QStringLiteral("b")));
    page.initializePage();
    page.dropTaskQueue(QStringLiteral("given up"));

    page.objectAdded(7); // the result of the task that was already out
    QCOMPARE(released.count(), 1);
    QCOMPARE(page.state(), BaseProgressWizardPage::State::Dropped);
}

void TestBaseProgressWizardPage::strayResultsAreIgnored_data()
{
    QTest::addColumn<QString>("stray"); // the method called while the create is out
    QTest::addRow("an update answer while a create is out") << "objectUpdated";
    QTest::addRow("a create answered twice") << "objectAdded";
}

void TestBaseProgressWizardPage::strayResultsAreIgnored()
{
    QFETCH(QString, stray);
    BaseProgressWizardPage page;
    QSignalSpy released(&page, &BaseProgressWizardPage::executeTask);
    page.addTask(makeTask(QStringLiteral("create_object"), QStringLiteral("a")));
    page.addTask(makeTask(QStringLiteral("save_object"), QStringLiteral("b")));
    page.addTask(makeTask(QStringLiteral("prescribe"), QStringLiteral("c")));
    page.initializePage();
    if (stray == QLatin1String("objectUpdated")) {
        page.objectUpdated(8);
        QCOMPARE(released.count(), 1);
        page.objectAdded(7);
    } else {
        page.objectAdded(7);
        page.objectAdded(7);
    }
    // Only the save is out: the stray answer released nothing more.
    QCOMPARE(released.count(), 2);
    QCOMPARE(page.succeededCount(), 1);
    QCOMPARE(released.last().first().value<TaskInfo>().uid, TYPE_ID(7));
}

void TestBaseProgressWizardPage::passesResultToTheTasksReceiver()
{
    BaseProgressWizardPage page;
    Processor processor(&page, -1);
    ResultPage firstPage;
    QObject noMethods; // has no "objectUpdated"; the chain must not stall on it

    TaskInfo create = makeTask(QStringLiteral("create_object"), QStringLiteral("a"));
    create.receiver = &firstPage;
    create.method = QStringLiteral("objectAdded");
    TaskInfo save = makeTask(QStringLiteral("add_permissions"), QStringLiteral("b"));
    save.receiver = &noMethods;
    save.method = QStringLiteral("objectUpdated");
    page.addTask(create);
    page.addTask(save);
    page.addTask(makeTask(QStringLiteral("prescribe"), QStringLiteral("c")));

    QSignalSpy finished(&page, &BaseProgressWizardPage::runFinished);
    page.initializePage();
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(processor.released.size(), 3);
    QCOMPARE(firstPage.added, QList<TYPE_ID>{101});
    QCOMPARE(processor.released.last().uid, TYPE_ID(101));
}

QTEST_MAIN(TestBaseProgressWizardPage)
#include "tst_baseprogresswizardpage.moc"
