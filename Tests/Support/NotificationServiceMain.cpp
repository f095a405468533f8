#include "Tests/Support/NotificationService.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// A notification daemon with bad manners, for the end-to-end tests. Its events go to stdout.
int main(int argc, char** argv)
{
    using Until = fixtures::ServiceManners::Until;
    fixtures::ServiceManners manners;
    for (int index = 1; index < argc; ++index) {
        const std::string_view word = argv[index];
        const int number = index + 1 < argc ? std::atoi(argv[index + 1]) : 0;
        if (word == "--inhibits") {
            manners.inhibits = true;
        } else if (word == "--pauses") {
            manners.pauses = true;
        } else if (word == "--keeps-requests") {
            manners.until = Until::kKeepsRequests;
        } else if (word == "--drops-requests") {
            manners.until = Until::kDropsRequests;
        } else if (word == "--name-bytes") {
            manners.nameBytes = static_cast<std::size_t>(number);
            ++index;
        } else if (word == "--name-changes") {
            manners.nameChanges = number;
            ++index;
        } else {
            std::fprintf(stderr, "usage: notification_service [--inhibits] [--pauses] [--keeps-requests]\n"
                                 "    [--drops-requests] [--name-bytes N] [--name-changes N]\n");
            return 2;
        }
    }
    fixtures::ServeNotifications(manners, "/dev/stdout");
}
