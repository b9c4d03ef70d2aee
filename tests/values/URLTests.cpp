#include "platform/URL.h"

#include <doctest/doctest.h>
#include <string>

using platform::formsURL;

TEST_CASE("texts that are URLs are told from those that are not")
{
    for (const char* const text :
         {"https://example.com", "https://example.com/a/b.pkg?x=1&y=%20#z", "file:///tmp/a.pkg",
          "mailto:a@b.example?subject=x", "HTTP://[::1]:8080/", "a+b-c.1:x", "x:~"}) {
        CAPTURE(text);
        CHECK(formsURL(text));
    }
    for (const char* const text :
         {"", ":", "https:", "://x", "example.com/a", "/tmp/a.pkg", "1a:x", "-a:x", "a b:c", "https://a b/",
          "https://a/%", "https://a/%2", "https://a/%g0", "https://a/\n", "https://a/\"", "https://a/<x>",
          "https://\xC3\xBC.example/", "https://a/\x7F", "a_b:c"}) {
        CAPTURE(text);
        CHECK_FALSE(formsURL(text));
    }
    CHECK_FALSE(formsURL(std::string("https://a/\0b", 12)));
}
