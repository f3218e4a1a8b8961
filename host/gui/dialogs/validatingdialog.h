#pragma once

#include <QDialog>

class QDialogButtonBox;
class QLabel;

// A dialog around one central widget with a button box under it, to which the caller adds
// its buttons. It is accepted only when its content is valid: every ParameterizedEdit in it
// that highlights validation holds valid input, and validate() agrees.
class ValidatingDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ValidatingDialog(QWidget *parent = nullptr);

    void setCentralWidget(QWidget *widget);
    QWidget *centralWidget() const { return m_central; }
    QDialogButtonBox *buttonBox() const { return m_buttons; }

public slots:
    void accept() override;

protected:
    // Further checks of a subclass; the base finds nothing wrong.
    virtual bool validate();

private:
    QWidget *m_central = nullptr;
    QLabel *m_problem = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
};
