#pragma once

#include "platform/ui/LayoutConstraint.h"

#include <memory>
#include <string>
#include <vector>

namespace platform::ui {

struct Rect {
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Rect&) const = default;
};

// A rectangle of a window: the base of every control, and by itself a plain container. Views are shared by their window
// and by the controllers that hold them as outlets. Main thread only. Setters never fire actions.
class View : public std::enable_shared_from_this<View> {
public:
    // A new plain container without a superview.
    static std::shared_ptr<View> create();
    virtual ~View();

    std::string identifier() const;
    void setIdentifier(const std::string& identifier);
    // What assistive tools call it.
    std::string accessibleName() const;
    void setAccessibleName(const std::string& name);

    bool isHidden() const;
    void setHidden(bool hidden);

    // Null for a view in no other view.
    std::shared_ptr<View> superview() const;
    // Appends; takes the view from the superview it had.
    void addSubview(const std::shared_ptr<View>& view);
    void removeFromSuperview();

    // True for the platform's plain view class itself, false for every control and other subclass.
    virtual bool isPlainContainer() const;

    // Constraints between this view and its subviews. Adding or removing them schedules a new layout.
    void addConstraints(const std::vector<LayoutConstraint>& constraints);
    void removeConstraints(const std::vector<LayoutConstraint>& constraints);
    std::vector<LayoutConstraint> constraints() const;

    // In the superview's coordinates, points, origin at the top left. Valid after a layout.
    Rect frame() const;
    // Takes the size that its content asks for.
    void sizeToFit();
    void layoutIfNeeded();

    struct Native; // the toolkit's side; defined by the adapter alone
    Native& native() const { return *_native; }

protected:
    explicit View(std::unique_ptr<Native> native);

private:
    std::unique_ptr<Native> _native;
};

} // namespace platform::ui
