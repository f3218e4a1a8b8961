#pragma once

class ZRDateEdit;

// The end of a password's validity is shown with a passed date marked, which the date edit
// only does when built so; a form can't pass that, so the form's edit makes way for one.
class PastMarkingDateEdit
{
public:
    // Puts a date edit that marks passed dates in the place of the form's one, with its
    // name, enabled state and calendar popup, deletes the form's, and returns the new one.
    // The caller stores it in the form's pointer and sets its place in the tab order.
    static ZRDateEdit *replace(ZRDateEdit *formEdit);

    PastMarkingDateEdit() = delete;
};
