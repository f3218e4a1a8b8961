#include "zrwizardpage.h"

ZRWizardPage::ZRWizardPage(QWidget *parent)
    : QWizardPage(parent)
{}

QString ZRWizardPage::pageListText() const
{
    return m_pageListText.isEmpty() ? title() : m_pageListText;
}

void ZRWizardPage::setPageListText(const QString &text)
{
    m_pageListText = text;
}

void ZRWizardPage::objectAdded(zeral::TYPE_ID uid)
{
    emit objectAddedReported(uid);
}

void ZRWizardPage::objectUpdated(zeral::TYPE_ID uid)
{
    emit objectUpdatedReported(uid);
}
