#include "helper/HelperOptions.h"

namespace helper {

const char* const HelperOptions::systemRules = nullptr;

const char* const HelperOptions::usage =
    "usage: com.zerkolin.brevane.scheduler [--root PATH] [--updates FILE]\n"
    "       com.zerkolin.brevane.scheduler --snapshot VOLUME|--remove-snapshot PATH\n"
    "       com.zerkolin.brevane.scheduler --simulate FILE\n"
    "       com.zerkolin.brevane.scheduler --self-check [--root PATH] ...\n"
    "Stores the backup schedule and serves it to the applications of this Mac, when launchd has started it; or makes "
    "one\n"
    "snapshot, or simulates, and ends.\n"
    "  --root PATH         the folder below which the product's files stand (/)\n"
    "  --updates FILE      a property list that names the feed of updates and their public key\n"
    "  --snapshot VOLUME   a local snapshot of the volume at this folder; prints its path\n"
    "  --remove-snapshot PATH\n"
    "                      removes such a snapshot\n"
    "  --simulate FILE     prints when backups would start by the property list FILE; touches nothing\n"
    "  --self-check        says whether this program could serve, with the options that follow; changes nothing\n";

} // namespace helper
