#include "validatingdialog.h"

#include <host/gui/widgets/parameterizededit.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

ValidatingDialog::ValidatingDialog(QWidget *parent)
    : QDialog(parent)
{
    m_problem = new QLabel(this);
    m_problem->setObjectName(QStringLiteral("problemLabel"));
    m_problem->setWordWrap(true);
    QPalette pal = m_problem->palette();
    pal.setColor(QPalette::WindowText, QColor(0xe5, 0x39, 0x35));
    m_problem->setPalette(pal);
    m_problem->hide();

    m_buttons = new QDialogButtonBox(this);
    m_buttons->setObjectName(QStringLiteral("buttonBox"));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_problem);
    layout->addWidget(m_buttons);
}

void ValidatingDialog::setCentralWidget(QWidget *widget)
{
    auto *box = static_cast<QVBoxLayout *>(layout());
    if (m_central) {
        box->removeWidget(m_central);
        m_central->deleteLater();
    }
    m_central = widget;
    if (widget)
        box->insertWidget(0, widget, 1);
}

void ValidatingDialog::accept()
{
    if (m_central) {
        const QList<ParameterizedEdit *> edits = m_central->findChildren<ParameterizedEdit *>();
        for (ParameterizedEdit *edit : edits) {
            if (edit->isValidationHighlighted() && edit->isEnabled() && !edit->isInputValid()) {
                m_problem->setText(tr("Поле заполнено неверно. Исправьте выделенное значение."));
                m_problem->show();
                edit->setFocus();
                return;
            }
        }
    }
    if (!validate())
        return;
    m_problem->hide();
    QDialog::accept();
}

bool ValidatingDialog::validate()
{
    return true;
}
