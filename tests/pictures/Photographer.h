#pragma once

#include "tests/pictures/Onlooker.h"

#include <QDir>
#include <QString>
#include <string>

// Saves what it sees.
class Photographer : public Onlooker {
public:
    Photographer(QDir folder, QString prefix);

    // What the next picture is called.
    void setName(const std::string& name) { _name = name; }
    int saved() const { return _saved; }
    bool failed() const { return _failed; }

protected:
    void see(QWidget& window, QWidget* sheet) override;

private:
    QDir _folder;
    QString _prefix;
    std::string _name;
    int _saved = 0;
    bool _failed = false;
};
