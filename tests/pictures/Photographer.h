#pragma once

#include <QDir>
#include <QObject>
#include <QPixmap>
#include <QString>
#include <string>

// Saves what is on screen.
class Photographer : public QObject {
public:
    Photographer(QDir folder, QString prefix);
    ~Photographer() override;
    Photographer(const Photographer&) = delete;
    Photographer& operator=(const Photographer&) = delete;

    // The window alone, whose identifier this is, or with the alert that is attached to it.
    void photographWindow(const char* identifier = "mainWindow");
    void photographSheet(const char* identifier = "mainWindow");
    // The next alert that shows, by itself, before it is answered.
    void photographNextAlert();

    // What the next picture is called.
    void setName(const std::string& name) { _name = name; }
    int saved() const { return _saved; }
    bool failed() const { return _failed; }

    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void save(const QPixmap& picture);

    QDir _folder;
    QString _prefix;
    std::string _name;
    bool _awaitsAlert = false;
    int _saved = 0;
    bool _failed = false;
};
