#pragma once

#include <QIcon>

class QPalette;

// The small round marks of the wizards: the state of a step in the side list and of a task in
// a progress log. Drawn in the palette's colours, so they follow the application's style.
class WizardMarks
{
public:
    enum Mark { Coming, Current, Passed, Skipped, Failed };

    static QIcon icon(Mark mark, const QPalette &palette);

    WizardMarks() = delete;
};
