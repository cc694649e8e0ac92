#include "contest.h"

#include <benchmark/benchmark.h>

namespace brindle::bench {
namespace {

void enter_run(const Contest& contest, const std::string& name, const Contender& contender) {
    const auto run = [contender](benchmark::State& state) {
        if (contender.prepare) {
            contender.prepare();
        }
        for ([[maybe_unused]] auto iteration : state) {
            contender.job();
        }
    };
    auto* const entered =
        benchmark::RegisterBenchmark((name + "/" + contender.name).c_str(), run)->UseRealTime();
    if (contest.iterations != 0) {
        entered->Iterations(contest.iterations);
    } else {
        entered->MinTime(contest.seconds);
    }
}

}  // namespace

void enter(const Contest& contest) {
    for (int round = 0; round < contest.rounds; ++round) {
        int place = 0;
        const auto next = [&](const Contender& contender) {
            enter_run(contest,
                      contest.job + "/" + std::to_string(round) + "/" + std::to_string(place),
                      contender);
            ++place;
        };
        next(contest.limit);
        for (const Contender& contender : contest.contenders) {
            next(contender);
            next(contest.limit);
        }
    }
}

}  // namespace brindle::bench
