#pragma once

#include "zrwizardpage.h"

#include <shared/taskinfo.h>

#include <QList>
#include <QPointer>

class QLabel;
class QListWidget;
class QListWidgetItem;
class QProgressBar;

// The last page of a wizard that changes things at the server. The pages before it hand it
// their tasks; nothing goes out until this page is shown. Then it releases the tasks one at a
// time through executeTask, each after the result of the one before, and logs each start and
// each failure.
//
// It carries a chain: the tasks after a "create_object" are made before the object exists and
// carry uid 0. The uid reported for the created object is written into them, up to the next
// "create_object". To learn every result the page names itself the receiver of each task it
// releases, and passes the result on to the receiver the task came with, if that one has the
// method.
class QTimer;
class BaseProgressWizardPage : public ZRWizardPage
{
    Q_OBJECT
public:
    enum class State { Waiting, Running, Finished, Failed, Dropped };
    Q_ENUM(State)

    explicit BaseProgressWizardPage(QWidget *parent = nullptr);

    void initializePage() override;
    // True once the run has ended, whichever way.
    bool isComplete() const override;

    void objectAdded(zeral::TYPE_ID uid) override;
    void objectUpdated(zeral::TYPE_ID uid) override;

    // By default a failed task ends the run, since the tasks after it rest on it. A wizard
    // whose tasks are independent of each other, one per object, turns this off: a failure
    // then drops only the tasks of the object it failed to create.
    void setStopOnFailure(bool stop);
    bool stopOnFailure() const { return m_stopOnFailure; }

    State state() const { return m_state; }
    int pendingCount() const { return m_pending.size(); }
    int succeededCount() const { return m_succeeded; }
    int failedCount() const { return m_failed; }

public slots:
    // Stores a task, in the order received, until the page is shown.
    void addTask(zeral::TaskInfo task);
    // Gives up every stored task and shows why.
    void dropTaskQueue(const QString &message);

signals:
    void executeTask(zeral::TaskInfo task);
    // The run has ended: true when every task succeeded.
    void runFinished(bool success);

private:
    void releaseNext();
    void taskFinished(zeral::TYPE_ID uid, bool created);
    void passResultOn(zeral::TYPE_ID uid);
    void fillUidOfChain(zeral::TYPE_ID uid);
    int dropTasksOfFailedObject();
    void endRun(State state, const QString &statusText);
    void updateProgress();
    void showProgress();
    QListWidgetItem *addLogLine(const QString &text, const QIcon &icon);

    QList<zeral::TaskInfo> m_pending;
    // The task out at the server, and where its result was to go before this page took it.
    zeral::TaskInfo m_current;
    bool m_waitingForResult = false;
    QPointer<QObject> m_currentReceiver;
    QString m_currentMethod;
    QListWidgetItem *m_currentLine = nullptr;

    State m_state = State::Waiting;
    bool m_stopOnFailure = true;
    int m_total = 0;
    int m_succeeded = 0;
    int m_failed = 0;

    QLabel *m_statusLabel;
    QProgressBar *m_progressBar;
    QListWidget *m_log;
    // Shows the counts and the newest log line now and then, not at every task: a run of
    // thousands of short tasks would otherwise spend its time repainting the page.
    QTimer *m_progressShown;
};
