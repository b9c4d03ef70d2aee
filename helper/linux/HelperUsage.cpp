#include "helper/HelperOptions.h"

namespace helper {

const char* const HelperOptions::systemRules = "/etc/polkit-1/rules.d";

const char* const HelperOptions::usage =
    "usage: com.zerkolin.brevane.scheduler [--root PATH] [--updates FILE] [--rules FOLDER]\n"
    "       com.zerkolin.brevane.scheduler --snapshot VOLUME|--remove-snapshot PATH\n"
    "       com.zerkolin.brevane.scheduler --simulate FILE\n"
    "       com.zerkolin.brevane.scheduler --download URL SIZE SECONDS SILENCE\n"
    "       com.zerkolin.brevane.scheduler --self-check|--take-back [--root PATH] ...\n"
    "Stores the backup schedule and serves it on the system bus; or makes one snapshot, or simulates, and ends.\n"
    "  --root PATH         the folder below which the product's files stand (/opt/brevane)\n"
    "  --updates FILE      a property list that names the feed of updates and their public key\n"
    "  --rules FOLDER      polkit's folder of rules (/etc/polkit-1/rules.d; with another root: none)\n"
    "  --snapshot VOLUME   a local snapshot of the btrfs volume at this folder; prints its path\n"
    "  --remove-snapshot PATH\n"
    "                      removes such a snapshot\n"
    "  --simulate FILE     prints when backups would start by the property list FILE; touches nothing\n"
    "  --download URL SIZE SECONDS SILENCE\n"
    "                      for a helper without a network: prints in pieces what the server has there, SIZE bytes and\n"
    "                      SECONDS at most, of which the server may be silent for SILENCE\n"
    "  --self-check        says whether this program could serve, with the options that follow; changes nothing\n"
    "  --take-back         puts the version before back in place of one that was never seen to serve\n";

} // namespace helper
