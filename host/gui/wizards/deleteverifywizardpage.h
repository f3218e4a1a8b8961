#pragma once

#include "zrwizardpage.h"

class AuthorizationWidget;

// The page of DeleteObjectWizard on which a second person confirms the deletion with a
// fingerprint. The wizard can't go on until the confirmation is granted.
class DeleteVerifyWizardPage : public ZRWizardPage
{
    Q_OBJECT
public:
    explicit DeleteVerifyWizardPage(QWidget *parent = nullptr);

    AuthorizationWidget *authorizationWidget() const { return m_authorization; }
    bool isComplete() const override;
    // The deletion can't be reached past an unconfirmed page, by the button or otherwise.
    bool validatePage() override;

private:
    AuthorizationWidget *m_authorization;
};
