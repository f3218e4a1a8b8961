#include "pastmarkingdateedit.h"

#include <host/gui/widgets/zrdateedit.h>

#include <QLayout>

ZRDateEdit *PastMarkingDateEdit::replace(ZRDateEdit *formEdit)
{
    QWidget *parent = formEdit->parentWidget();
    auto *dateEdit = new ZRDateEdit(parent, true);
    dateEdit->setObjectName(formEdit->objectName());
    dateEdit->setEnabled(formEdit->isEnabled());
    dateEdit->setCalendarPopup(formEdit->calendarPopup());
    // The layouts of the parent are searched all the way down.
    delete parent->layout()->replaceWidget(formEdit, dateEdit);
    delete formEdit;
    return dateEdit;
}
