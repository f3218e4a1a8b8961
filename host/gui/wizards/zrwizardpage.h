#pragma once

#include <shared/types.h>

#include <QWizardPage>

// A wizard page that can be named in the side list of a PageListWizard and told the result of
// the server tasks it made. A processor reports a result by a queued call of "objectAdded" or
// "objectUpdated" by name, with the uid, or 0 when the task failed.
class ZRWizardPage : public QWizardPage
{
    Q_OBJECT
public:
    explicit ZRWizardPage(QWidget *parent = nullptr);

    // The name of the page in the wizard's side list; the title unless one was set.
    virtual QString pageListText() const;
    void setPageListText(const QString &text);

    // The object made by a "create_object" task of this page, 0 when it failed.
    Q_INVOKABLE virtual void objectAdded(zeral::TYPE_ID uid);
    // The object changed by any other task of this page, 0 when it failed.
    Q_INVOKABLE virtual void objectUpdated(zeral::TYPE_ID uid);

signals:
    void objectAddedReported(zeral::TYPE_ID uid);
    void objectUpdatedReported(zeral::TYPE_ID uid);

private:
    QString m_pageListText;
};
