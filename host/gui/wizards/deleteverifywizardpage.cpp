#include "deleteverifywizardpage.h"

#include <host/gui/biometrics/authorizationwidget.h>

#include <QLabel>
#include <QVBoxLayout>

DeleteVerifyWizardPage::DeleteVerifyWizardPage(QWidget *parent)
    : ZRWizardPage(parent)
    , m_authorization(new AuthorizationWidget(this))
{
    setTitle(tr("Подтверждение"));
    m_authorization->setObjectName(QStringLiteral("authorizationWidget"));
    auto *explanation = new QLabel(tr("Удаление нужно подтвердить отпечатком пальца "
                                      "пользователя, который имеет на это право."),
                                   this);
    explanation->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(explanation);
    layout->addWidget(m_authorization, 1);
    connect(m_authorization, &AuthorizationWidget::granted, this,
            &DeleteVerifyWizardPage::completeChanged);
}

bool DeleteVerifyWizardPage::isComplete() const
{
    return m_authorization->isGranted();
}

bool DeleteVerifyWizardPage::validatePage()
{
    return isComplete();
}
