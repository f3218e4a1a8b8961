#pragma once

#include <host/gui/wizards/baseprogresswizardpage.h>
#include <shared/templatedata.h>
#include <shared/types.h>

#include <QList>
#include <QMultiHash>
#include <QString>

#include <functional>

class QLabel;

// The last page of the new-user wizard. It holds the tasks of the pages before it and runs
// them when it is shown; if the operator's creations need a second person's fingerprint, it
// asks for it first, and a refusal throws every task away, so the server never hears of the
// user.
//
// When the run stops after the user was created, the page says so under the log: the account
// exists, half set up, and the operator has to finish or delete it. A wizard that makes many
// users at once gives the page its own summary of the outcome instead (setOutcomeSummary).
class UserProgressWizardPage : public BaseProgressWizardPage
{
    Q_OBJECT
public:
    // What a wizard of many users says about the ended run, from the page's counts: the
    // text shown under the log, after the failure's reason if there is one.
    using OutcomeSummary = std::function<QString(const UserProgressWizardPage &page)>;

    explicit UserProgressWizardPage(QWidget *parent = nullptr);

    void initializePage() override;
    void objectAdded(zeral::TYPE_ID uid) override;
    void objectUpdated(zeral::TYPE_ID uid) override;

    // Replaces the one-user outcome texts; also shown after a run that went well.
    void setOutcomeSummary(OutcomeSummary summary);
    // The uids the run's creations reported, in the order created.
    QList<zeral::TYPE_ID> createdUids() const { return m_createdUids; }
    // Whether the run failed at a step after its last creation, which leaves that object
    // made but not fully set up; false when it failed at a creation, or did not fail.
    bool failedAfterCreation() const { return m_failedAfterCreation; }

    // The confirmers' templates last given, without the operator's own.
    QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templatesForVerification() const
    {
        return templates;
    }
    // The people the confirmation identified by finger, in the order read, as they were when
    // it was accepted; empty without a confirmation. The users screen names the confirmer
    // among them to the server with each task.
    QList<zeral::TYPE_ID> identifiedUids() const { return m_identifiedUids; }
    // The uid of the user the run created, 0 while there is none.
    zeral::TYPE_ID createdUid() const { return m_createdUid; }
    // What the page adds to the base's log about the outcome for the operator; empty if all
    // went well.
    QString noteText() const;

signals:
    void templatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);
    void uidsForVerify(int variant, int index, QList<zeral::TYPE_ID>);
    void variantsForVerify(QString name, int id, int count);
    void requestUserTemplatesForCreateUser();
    void startVerify();

public slots:
    // Whether the creation may go on: true at once unless the operator's creations need a
    // confirmation; otherwise after the confirming person's finger and "Подтвердить".
    bool verifyCreateUser();
    void setTemplatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);
    // The reason the server or the connection gave for the task that ended the run, shown
    // under the log.
    void showFailureReason(const QString &reason);
    // Says the outcome anew once the run has ended, for a summary that has learnt more since.
    void refreshNote();

private:
    void runEnded(bool success);
    void showNote(const QString &text);

    QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates;
    QList<zeral::TYPE_ID> m_identifiedUids;
    zeral::TYPE_ID m_createdUid = 0;
    QList<zeral::TYPE_ID> m_createdUids;
    bool m_failedAfterCreation = false;
    OutcomeSummary m_summary;
    QString m_reason;
    QLabel *m_note;
};
