#pragma once

#include "platform/macos/interface/InterfaceDescription.h"

#include <functional>

using ElementVisitor = std::function<void(const platform::macos::Element&)>;

inline void visitElement(const platform::macos::Element& element, const ElementVisitor& visitor)
{
    visitor(element);
    for (const auto& child : element.children)
        visitElement(child, visitor);
}

// All elements of an interface, each before its children.
inline void visitAll(const platform::macos::InterfaceDescription& description, const ElementVisitor& visitor)
{
    visitElement(description.root, visitor);
    for (const auto& element : description.detached)
        visitElement(element, visitor);
}
