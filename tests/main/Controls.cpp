#include "tests/platform/ui/User.h"

#include <cstdlib>

#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

int main(int argc, char** argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const user::Session session(argc, argv);
    return doctest::Context(argc, argv).run();
}
