#include "engine/office/shared_night.h"

#include <gtest/gtest.h>

#include <thread>

#include "engine/db/query.h"
#include "engine/db/session.h"
#include "tests/engine/small_chain.h"

namespace torvik {
namespace {

TEST(SharedNights, RowsThatCopiesWriteAtTheSameTimeAllStand) {
    constexpr int kCopies = 3;
    constexpr int kRows = 300;
    test::SmallChain chain;
    std::vector<std::thread> copies;
    std::vector<int> written(kCopies);
    for (int i = 0; i < kCopies; ++i)
        copies.emplace_back([&chain, &count = written[static_cast<std::size_t>(i)]] {
            db::Session office;
            office.SetConnectString(chain.connectString(test::SmallChain::kBackOffice));
            office.Open();
            db::Query query(&office);
            query.SQL = {QStringLiteral("insert into dts_logg values (1, 1, '1', getdate(), 1, 'Slutt')")};
            try {
                for (; count < kRows; ++count) query.ExecSQL();
            } catch (const std::exception&) {
            }
        });
    for (std::thread& copy : copies) copy.join();
    EXPECT_EQ(written, std::vector<int>(kCopies, kRows));
}

}  // namespace
}  // namespace torvik
