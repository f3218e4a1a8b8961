#pragma once

#include <QString>
#include <QVector>

class ZRComboBox;

// The role templates a selector offers, each shown by the name the operator knows it by.
// The template table is a hash whose order differs from run to run, so a selector lists its
// templates by name: the operator finds a template where he found it before.
class RoleTemplateChoices
{
public:
    struct Choice
    {
        QString text;
        QString id;
    };

    // The built-in name of a template in the interface language; empty for a template that
    // isn't built in.
    static QString builtInName(const QString &id);

    // Replaces the selector's entries by the choices, ordered by name (by id among equal
    // names), each with an empty icon and the id as data. The selector stays quiet while it
    // is refilled, since that is nobody's choice; the first entry is then the current one.
    static void fill(ZRComboBox *selector, QVector<Choice> choices);

    RoleTemplateChoices() = delete;
};
