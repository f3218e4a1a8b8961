#pragma once

#include "pagelistwizard.h"

#include <shared/taskinfo.h>
#include <shared/templatedata.h>

class BaseProgressWizardPage;
class DeleteVerifyWizardPage;
class QLabel;
class QListWidget;
class ZRWizardPage;

// Deletes objects of the store after the operator has seen them listed, and, where a second
// person must agree, after that person's fingerprint. Each object becomes one "delete_object"
// task, emitted through appendTask one after the other; one that fails doesn't stop the others.
//
// The verification runs on signals: entering the confirmation page asks for the templates with
// requestUserTemplatesForDelete; the answer comes back through variantsForVerify,
// uidsForVerify, templatesForVerify (or the slot setTemplatesForVerify) and startVerify. The
// operator's own fingerprints are left out: nobody confirms his own deletion.
class DeleteObjectWizard : public PageListWizard
{
    Q_OBJECT
public:
    enum PageId { ObjectsPage, VerifyPage, ProgressPage };

    explicit DeleteObjectWizard(QWidget *parent = nullptr);

    void setUids(const QList<zeral::TYPE_ID> &uids);
    QList<zeral::TYPE_ID> uids() const { return m_uids; }
    void setNeedVerify(bool need);
    bool needVerify() const { return m_verifyPage != nullptr; }

    int nextId() const override;

    DeleteVerifyWizardPage *verifyPage() const { return m_verifyPage; }
    BaseProgressWizardPage *progressPage() const { return m_progressPage; }

public slots:
    void setTemplatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);

signals:
    void appendTask(zeral::TaskInfo task);
    void requestUserTemplatesForDelete();
    void templatesForVerify(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates);
    void variantsForVerify(QString name, int id, int count);
    void uidsForVerify(int variant, int index, QList<zeral::TYPE_ID> uids);
    void startVerify();

protected:
    void initializePage(int id) override;

private:
    struct Target
    {
        zeral::TYPE_ID uid = 0;
        QString type;
        QString name;
    };

    static Target findTarget(zeral::TYPE_ID uid);
    void applyTemplates(const QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> &templates);
    void updateCommitButton();

    QList<zeral::TYPE_ID> m_uids;
    bool m_tasksMade = false;
    ZRWizardPage *m_objectsPage;
    QLabel *m_objectsLabel;
    QListWidget *m_objectList;
    DeleteVerifyWizardPage *m_verifyPage = nullptr;
    BaseProgressWizardPage *m_progressPage;
};
