#include "schedule/BRVWhenInactiveViewController.h"

#include <doctest/doctest.h>

TEST_CASE("the when-inactive editor has its mode's name and an empty sub-record, whatever it is given")
{
    BRVWhenInactiveViewController editor;
    CHECK(editor.name() == "WhenInactive");
    CHECK(editor.settings().empty());
    const platform::Dictionary given{{"Minutes", 5}};
    editor.setSettings(&given);
    CHECK(editor.settings().empty());
    CHECK(editor.view());
    CHECK(editor.isViewLoaded());
    CHECK(editor.settings().empty());
    editor.setSettings(nullptr);
    CHECK(editor.settings().empty());
}

TEST_CASE("an editor's view is loaded once, when it is first asked for")
{
    BRVWhenInactiveViewController editor;
    CHECK_FALSE(editor.isViewLoaded());
    const auto view = editor.view();
    CHECK(editor.view() == view);
}
