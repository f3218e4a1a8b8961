#pragma once

#include <host/gui/wizards/zrwizardpage.h>
#include <shared/types.h>

#include <QSet>

#include <memory>

class EmailSubjectProxyModel;

namespace Ui {
class MobileUserSelectWizardPage;
}

// The first page of the new-mobile-users wizard: the kind of mobile role, and the employees
// to make mobile users of, checked in the organisation tree. Only employees with an address
// and without an account count; the page is complete once one of them is checked.
//
// Fields: "user/uids" (the checked employees' uids, a QVariantList of unsigned int),
// "user/role/mobile_employee" and "user/role/mobile_chief" (the two radio buttons).
class MobileUserSelectWizardPage : public ZRWizardPage
{
    Q_OBJECT
public:
    explicit MobileUserSelectWizardPage(QWidget *parent = nullptr);
    ~MobileUserSelectWizardPage() override;

    // The checked employees who can be made mobile users: checked departments and disabled
    // rows fall out.
    QSet<unsigned int> checkedUids() const;
    // "RT_MOBILE" or "RT_MOBILE_CHIEF" by the radio buttons; empty with neither.
    QString roleTemplateId() const;
    bool isComplete() const override;
    bool validatePage() override;

    EmailSubjectProxyModel *proxy() const { return m_proxy; }

public slots:
    // Opens the page on these employees only: the tree keeps them and the path to them, they
    // are checked, and the search goes away.
    void setChecked(zeral::OBJECT_UID_LIST uids);
    void startSearch(QString text);
    void updateCheckstate();

private:
    std::unique_ptr<Ui::MobileUserSelectWizardPage> m_ui;
    EmailSubjectProxyModel *m_proxy;
};
