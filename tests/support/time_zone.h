// Small guards that tests share: a process-wide setting changed for a test's length.
#pragma once

#include <QByteArray>
#include <cstdlib>
#include <ctime>

namespace torvik::test {

// Local time is `zone` (a tz database name) while this stands.
class TimeZone {
public:
    explicit TimeZone(const char* zone) : before_(qgetenv("TZ")), wasSet_(qEnvironmentVariableIsSet("TZ")) {
        qputenv("TZ", zone);
        tzset();
    }
    ~TimeZone() {
        if (wasSet_)
            qputenv("TZ", before_);
        else
            qunsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    QByteArray before_;
    bool wasSet_;
};

}  // namespace torvik::test
