#pragma once

#include <QMap>
#include <QPointer>
#include <QVariant>
#include <QWidget>

class KPasswordLineEdit;
class PasswordCriteriaPanel;
class QCheckBox;
class QPushButton;

// The fields of a new password: the password and its repetition, each with show and hide,
// checked live against the installation's policy (GUIPassFuncs). The rules stand in a
// floating panel beside the window, each marked met or not. The extra elements, shown by
// default, generate a password that meets the policy and show both fields in clear text.
// passCheckResult() tells the verdict whenever it changes: true when the password meets
// every rule and both fields agree.
class PasswordChangeWidget : public QWidget
{
    Q_OBJECT
public:
    explicit PasswordChangeWidget(QWidget *parent = nullptr);
    ~PasswordChangeWidget() override;

    QString password() const;
    // The verdict on the fields as they stand.
    bool isPasswordAcceptable() const { return m_verdict; }
    // Replaces the policy read from the database object.
    void setPasswordOptions(const QMap<QString, QVariant> &options);
    QMap<QString, QVariant> passwordOptions() const { return m_options; }
    // The keys of the rules not met now, including PasswordCriteriaPanel::Match.
    QStringList unmetCriteria() const;
    PasswordCriteriaPanel *criteriaWidget() const;

public slots:
    void setElementsEnabled(bool enabled);
    // Shows or hides the generate button and the show-password box.
    void setVisisbleExtraElements(bool visible);
    // Judges the fields now, reports the verdict even if it hasn't changed and shows the
    // rules beside the window.
    void startCheckingProcess();
    // Places the rules beside the window again; call it when the window moves or resizes.
    void moveCriteriaWidget();
    void hideCriteriaWidget();
    // Fills both fields with a new password that meets the policy and shows it.
    void generatePassword();

signals:
    void passCheckResult(bool acceptable);
    void passwordGenerated(QString password);

protected:
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void check();
    void showCriteriaWidget();
    void updateCriteriaTexts();

    KPasswordLineEdit *m_passwordEdit = nullptr;
    KPasswordLineEdit *m_repeatEdit = nullptr;
    QPushButton *m_generateButton = nullptr;
    QCheckBox *m_showCheck = nullptr;
    QPointer<PasswordCriteriaPanel> m_criteria; // a window of its own, owned by this widget
    QMap<QString, QVariant> m_options;
    bool m_verdict = false;
    // The rules were up when the widget was hidden without being asked to drop them: a
    // wizard hides its pages for a moment on every change of the buttons.
    bool m_restoreCriteria = false;
};
