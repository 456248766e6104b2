// How long an empty stand-in server takes from nothing to its first answer.
#include <algorithm>
#include <vector>

#include "bench/figure.h"
#include "sandbox/server/server.h"
#include "tests/support/tds_client.h"

int main() {
    constexpr int kStarts = 21;
    constexpr double kMost = 100;
    std::vector<double> milliseconds;
    for (int i = 0; i < kStarts; ++i) {
        milliseconds.push_back(1000 * torvik::bench::seconds([] {
                                   sandbox::ServerOptions options;
                                   options.saPassword = "secret";
                                   const sandbox::Server server(options);
                                   sandbox::tds::TdsClient client(server.port());
                                   (void)client.login({});
                                   (void)client.batch("SELECT 1");
                               }));
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    torvik::bench::tell("start of an empty server, login and first answer, median", milliseconds[kStarts / 2], "ms",
                        "100 ms at most", kMost);
    torvik::bench::tell("start of an empty server, login and first answer, slowest", milliseconds.back(), "ms",
                        "100 ms at most", kMost);
}
