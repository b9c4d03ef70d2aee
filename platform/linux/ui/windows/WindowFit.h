#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace platform::ui {

// Keeps a window as high as its content asks for. When subviews or constraints were exchanged the window keeps its
// width and takes the content's height, in one step and without painting what lies between; else it only moves as far
// as the content's least and greatest heights make it.
class WindowFit final : public QObject {
public:
    // To be called before something that may take the keyboard from a widget in the container.
    static void contentWillChange(const QWidget* container);
    // To be called after a change to the subviews or constraints of a container.
    static void contentChanged(QWidget* container);
    // What the window may take on its screen, its frame left out.
    static QSize room(const QWidget& window);
    // Does now what is due at the next layout.
    static void apply(QWidget* window);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit WindowFit(QWidget* window);
    void beginExchange();
    void endExchange();
    void fit();
    void resizeWindow();

    QWidget* _window;
    QPointer<QWidget> _focused;
    bool _exchanged = false;
};

} // namespace platform::ui
