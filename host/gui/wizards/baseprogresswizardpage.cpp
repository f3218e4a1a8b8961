#include "baseprogresswizardpage.h"

#include "wizardmarks.h"
#include "wizardslogging.h"

#include <QLabel>
#include <QListWidget>
#include <QTimer>
#include <QMetaMethod>
#include <QPixmap>
#include <QProgressBar>
#include <QVBoxLayout>

namespace {

const QString createObjectKind = QStringLiteral("create_object");
const QColor failureText(0xb7, 0x1c, 0x1c);

QIcon blankIcon()
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    return QIcon(pixmap);
}

} // namespace

BaseProgressWizardPage::BaseProgressWizardPage(QWidget *parent)
    : ZRWizardPage(parent)
    , m_statusLabel(new QLabel(this))
    , m_progressBar(new QProgressBar(this))
    , m_log(new QListWidget(this))
    , m_progressShown(new QTimer(this))
{
    m_progressShown->setSingleShot(true);
    m_progressShown->setInterval(50);
    connect(m_progressShown, &QTimer::timeout, this, &BaseProgressWizardPage::showProgress);
    m_statusLabel->setObjectName(QStringLiteral("statusLabel"));
    m_statusLabel->setWordWrap(true);
    m_statusLabel->setText(tr("Задачи будут выполнены при переходе на эту страницу."));
    m_progressBar->setObjectName(QStringLiteral("progressBar"));
    m_progressBar->setTextVisible(true);
    m_progressBar->setFormat(tr("%v из %m"));
    m_progressBar->setValue(0);
    m_log->setObjectName(QStringLiteral("taskLog"));
    m_log->setSelectionMode(QAbstractItemView::NoSelection);
    m_log->setFocusPolicy(Qt::NoFocus);
    // One line per task, all of one height: a run of thousands of tasks then costs the list
    // no measuring of every earlier line at each new one. A line too long for the width is
    // shortened in the middle, and its tooltip holds it whole.
    m_log->setUniformItemSizes(true);
    m_log->setWordWrap(false);
    m_log->setTextElideMode(Qt::ElideMiddle);
    m_log->setIconSize(QSize(16, 16));
    m_log->setSpacing(1);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_statusLabel);
    layout->addWidget(m_progressBar);
    layout->addWidget(m_log, 1);
}

void BaseProgressWizardPage::setStopOnFailure(bool stop)
{
    m_stopOnFailure = stop;
}

void BaseProgressWizardPage::addTask(zeral::TaskInfo task)
{
    if (m_state == State::Dropped) {
        qCDebug(lcWizards) << "task after the queue was dropped, ignored" << task.type;
        return;
    }
    m_pending.append(task);
    if (m_state == State::Running) {
        ++m_total;
        updateProgress();
    }
}

void BaseProgressWizardPage::initializePage()
{
    if (m_state == State::Running || m_state == State::Dropped)
        return;
    m_log->clear();
    m_succeeded = 0;
    m_failed = 0;
    m_total = m_pending.size();
    if (m_pending.isEmpty()) {
        m_progressBar->setRange(0, 1);
        m_progressBar->setValue(1);
        endRun(State::Finished, tr("Нет задач для выполнения."));
        return;
    }
    m_state = State::Running;
    emit completeChanged();
    releaseNext();
}

bool BaseProgressWizardPage::isComplete() const
{
    return m_state == State::Finished || m_state == State::Failed || m_state == State::Dropped;
}

void BaseProgressWizardPage::objectAdded(zeral::TYPE_ID uid)
{
    ZRWizardPage::objectAdded(uid);
    taskFinished(uid, true);
}

void BaseProgressWizardPage::objectUpdated(zeral::TYPE_ID uid)
{
    ZRWizardPage::objectUpdated(uid);
    taskFinished(uid, false);
}

void BaseProgressWizardPage::dropTaskQueue(const QString &message)
{
    qCDebug(lcWizards) << "task queue dropped" << m_pending.size() << message;
    m_pending.clear();
    addLogLine(message, WizardMarks::icon(WizardMarks::Failed, palette()))
        ->setForeground(failureText);
    endRun(State::Dropped, message);
}

void BaseProgressWizardPage::releaseNext()
{
    if (m_pending.isEmpty()) {
        if (m_failed == 0) {
            endRun(State::Finished, tr("Готово. Выполнено задач: %1.").arg(m_succeeded));
        } else {
            endRun(State::Finished, tr("Готово, но с ошибками. Выполнено задач: %1, с ошибкой: %2.")
                                        .arg(m_succeeded)
                                        .arg(m_failed));
        }
        return;
    }

    zeral::TaskInfo task = m_pending.takeFirst();
    m_current = task;
    m_currentReceiver = task.receiver;
    m_currentMethod = task.method;
    task.receiver = this;
    task.method = task.type == createObjectKind ? QStringLiteral("objectAdded")
                                                : QStringLiteral("objectUpdated");
    m_waitingForResult = true;

    const QString text
        = task.startMessage.isEmpty() ? tr("Задача «%1»").arg(task.type) : task.startMessage;
    m_currentLine = addLogLine(text, WizardMarks::icon(WizardMarks::Current, palette()));
    updateProgress();
    qCDebug(lcWizards) << "release task" << task.id << task.type << task.uid;
    emit executeTask(task);
}

void BaseProgressWizardPage::taskFinished(zeral::TYPE_ID uid, bool created)
{
    if (!m_waitingForResult) {
        qCDebug(lcWizards) << "result without a task out, ignored" << uid;
        return;
    }
    // The page named the method by the kind of the task it released: a result by the other
    // method belongs to no task out now (a repeated or late answer) and must not move the chain.
    if (created != (m_current.type == createObjectKind)) {
        qCWarning(lcWizards) << "result by the wrong method, ignored" << uid << m_current.type;
        return;
    }
    m_waitingForResult = false;
    passResultOn(uid);
    if (m_state != State::Running)
        return; // dropped while the task was out

    if (uid == 0) {
        ++m_failed;
        qCWarning(lcWizards) << "task failed" << m_current.id << m_current.type;
        if (m_currentLine)
            m_currentLine->setIcon(WizardMarks::icon(WizardMarks::Failed, palette()));
        const QString error
            = m_current.errorMessage.isEmpty()
                  ? tr("Ошибка: %1").arg(m_currentLine ? m_currentLine->text() : m_current.type)
                  : m_current.errorMessage;
        addLogLine(error, blankIcon())->setForeground(failureText);

        if (m_stopOnFailure) {
            const int notRun = m_pending.size();
            m_pending.clear();
            if (notRun > 0) {
                addLogLine(tr("Не выполнено задач: %1").arg(notRun),
                           WizardMarks::icon(WizardMarks::Skipped, palette()));
            }
            updateProgress();
            endRun(State::Failed,
                   tr("Выполнение остановлено: задача «%1» завершилась с ошибкой. Успешно "
                      "выполнено задач: %2 из %3.")
                       .arg(m_currentLine ? m_currentLine->text() : m_current.type)
                       .arg(m_succeeded)
                       .arg(m_total));
            return;
        }
        if (m_current.type == createObjectKind) {
            const int skipped = dropTasksOfFailedObject();
            if (skipped > 0) {
                addLogLine(tr("Пропущено задач этого объекта: %1").arg(skipped),
                           WizardMarks::icon(WizardMarks::Skipped, palette()));
            }
        }
    } else {
        ++m_succeeded;
        if (m_currentLine)
            m_currentLine->setIcon(WizardMarks::icon(WizardMarks::Passed, palette()));
        if (created)
            fillUidOfChain(uid);
    }
    m_currentLine = nullptr;
    updateProgress();
    releaseNext();
}

void BaseProgressWizardPage::passResultOn(zeral::TYPE_ID uid)
{
    QObject *receiver = m_currentReceiver.data();
    m_currentReceiver.clear();
    if (!receiver || receiver == this || m_currentMethod.isEmpty())
        return;
    const QByteArray method = m_currentMethod.toLatin1();
    const QByteArray signature
        = QMetaObject::normalizedSignature(QByteArray(method + "(zeral::TYPE_ID)").constData());
    if (receiver->metaObject()->indexOfMethod(signature.constData()) < 0) {
        qCDebug(lcWizards) << "the task's receiver has no method" << signature;
        return;
    }
    QMetaObject::invokeMethod(receiver, method.constData(), Qt::DirectConnection,
                              Q_ARG(zeral::TYPE_ID, uid));
}

void BaseProgressWizardPage::fillUidOfChain(zeral::TYPE_ID uid)
{
    for (zeral::TaskInfo &task : m_pending) {
        if (task.type == createObjectKind)
            break;
        if (task.uid == 0)
            task.uid = uid;
        for (zeral::TaskInfo &subtask : task.subtasks) {
            if (subtask.uid == 0)
                subtask.uid = uid;
        }
    }
}

int BaseProgressWizardPage::dropTasksOfFailedObject()
{
    int dropped = 0;
    while (!m_pending.isEmpty() && m_pending.constFirst().type != createObjectKind) {
        m_pending.removeFirst();
        ++dropped;
    }
    m_total -= dropped;
    return dropped;
}

void BaseProgressWizardPage::endRun(State state, const QString &statusText)
{
    m_progressShown->stop();
    showProgress();
    m_state = state;
    m_currentLine = nullptr;
    m_statusLabel->setText(statusText);
    QPalette labelPalette = palette();
    if (state == State::Failed || state == State::Dropped || m_failed > 0)
        labelPalette.setColor(QPalette::WindowText, failureText);
    m_statusLabel->setPalette(labelPalette);
    emit completeChanged();
    emit runFinished(state == State::Finished && m_failed == 0);
}

void BaseProgressWizardPage::updateProgress()
{
    // The first change shows at once, a burst after it with the next look.
    if (m_progressShown->isActive())
        return;
    showProgress();
    m_progressShown->start();
}

void BaseProgressWizardPage::showProgress()
{
    m_log->setUpdatesEnabled(true);
    if (m_log->count() > 0)
        m_log->scrollToItem(m_log->item(m_log->count() - 1));
    m_progressBar->setRange(0, qMax(m_total, 1));
    m_progressBar->setValue(m_succeeded + m_failed);
    if (m_state == State::Running && m_waitingForResult) {
        m_statusLabel->setText(
            tr("Выполняется задача %1 из %2…").arg(m_succeeded + m_failed + 1).arg(m_total));
    }
}

QListWidgetItem *BaseProgressWizardPage::addLogLine(const QString &text, const QIcon &icon)
{
    // Lines of a running burst are painted with the next look at the progress.
    if (m_progressShown->isActive())
        m_log->setUpdatesEnabled(false);
    auto *item = new QListWidgetItem(icon, text, m_log);
    item->setToolTip(text);
    return item;
}
