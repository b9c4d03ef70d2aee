#pragma once

#include "platform/linux/ui/layout/ConstraintSolver.h"
#include "platform/macos/interface/InterfaceConstraints.h"
#include "platform/ui/View.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A window of the macOS edition as the system's layout would place it: the constraints of its description and of the
// stacks in it, what each control asks for (as its peer on Linux does), and the window's wish to stay as large as it
// is.
class SolvedWindow {
public:
    using View = platform::ui::View;
    // The peer on Linux; null where there is none.
    using FindView = std::function<std::shared_ptr<View>(std::string_view identifier)>;

    SolvedWindow(const char* name, FindView find);

    // With what stands in the stacks of the peers now.
    void solve();

    bool isSolved() const { return _height.has_value(); }
    double height() const { return *_height; }
    bool contains(const std::string& identifier) const { return _nodes.contains(identifier); }
    // In the coordinates of the view that it stands in.
    platform::ui::Rect frame(const std::string& identifier) const { return _frames.at(identifier); }
    // Of a control, how much lower than its content asks for.
    double compression(const std::string& identifier) const;
    std::vector<std::string> identifiers() const;

private:
    struct Node {
        std::size_t leading, top, width, height;
        std::optional<double> askedHeight;
        platform::ui::LinearExpression baseline;
        bool isCollapsed = false;
    };

    Node addNode();
    Node addElement(const platform::macos::Element& element);
    Node addStacked(const std::shared_ptr<View>& view);
    std::vector<Node> addStackedChildren(const View& stack, const Node& holder);
    void addContent(const platform::macos::Element& element, const View& peer, Node& node);
    void addConstraints(const platform::macos::ElementConstraints& constraints, const Node& holder,
                        const std::vector<Node>& children);
    void holdSize(const Node& content);

    const platform::macos::InterfaceDescription& _description;
    FindView _find;
    platform::ui::ConstraintSolver _solver;
    std::map<std::string, Node> _nodes;
    std::map<std::string, platform::ui::Rect> _frames;
    std::optional<double> _width;
    std::optional<double> _height;
};
