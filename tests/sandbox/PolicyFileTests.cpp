#include "sandbox/authority/PolicyFile.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>

TEST_CASE("the prompt of an action is its message that is in no particular language")
{
    TemporaryDirectory folder;
    auto path = folder.write("policy",
                             "<?xml version=\"1.0\"?><policyconfig>"
                             "<action id=\"a.b\"><description>no</description>"
                             "<message xml:lang=\"de\">Nein</message><message>Allow a &amp; b?</message>"
                             "</action><action id=\"c\"><message>C?</message></action></policyconfig>");
    CHECK(PolicyFile::promptsInFile(path) == PolicyFile::Prompts{{"a.b", "Allow a & b?"}, {"c", "C?"}});
}

TEST_CASE("a policy file that is missing or damaged has no prompts")
{
    TemporaryDirectory folder;
    CHECK_FALSE(PolicyFile::promptsInFile(folder.file("none")));
    CHECK_FALSE(PolicyFile::promptsInFile(folder.write("policy", "<policyconfig><action id=\"a\">")));
}
