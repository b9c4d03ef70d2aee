#include "platform/macos/interface/PlainTitle.h"

#include <doctest/doctest.h>

using platform::macos::plainTitle;

TEST_CASE("a title loses the mark for a key that macOS has not")
{
    CHECK(plainTitle("&File") == "File");
    CHECK(plainTitle("Cu&t") == "Cut");
    CHECK(plainTitle("A && B") == "A & B");
    CHECK(plainTitle("適用(&A)") == "適用");
    CHECK(plainTitle("バックアップを自動作成(&B):") == "バックアップを自動作成:");
    CHECK(plainTitle("アップデートを確認(&C)…") == "アップデートを確認…");
    CHECK(plainTitle("(now)") == "(now)");
    CHECK(plainTitle("to") == "to");
    CHECK(plainTitle("") == "");
    CHECK(plainTitle("at the end &") == "at the end ");
}
