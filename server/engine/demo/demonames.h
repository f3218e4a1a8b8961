#pragma once

#include <QRandomGenerator>
#include <QString>

namespace zeral::server {

// Russian names for the people of the demo organisation, and the Latin spelling that their
// e-mail addresses are made of.
class DemoNames
{
public:
    struct Person
    {
        QString surname;
        QString name;
        QString patronymic;
        bool female = false;
    };

    // A person drawn from the pools; the same generator state gives the same person.
    static Person person(QRandomGenerator &random);
    // Russian letters in the Latin alphabet, lower case, as passports spell them; anything
    // that is neither a letter nor a digit is dropped.
    static QString transliterate(const QString &text);

    DemoNames() = delete;
};

} // namespace zeral::server
