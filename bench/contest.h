// Runs the contenders of a job in turn, each between two runs of the job's limit, so that other
// load on the machine affects both.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace brindle::bench {

struct Contender {
    std::string name;
    std::function<void()> job;
    // Puts its file back before each run, untimed.
    std::function<void()> prepare = {};
};

struct Contest {
    std::string job;
    Contender limit;
    std::vector<Contender> contenders;
    int rounds = 15;
    // Of one run; 0 lets the run be as long as `seconds` asks for.
    int iterations = 0;
    double seconds = 0.05;
};

// Registers one benchmark for each run, named "<job>/<round>/<place>/<contender>"; the limit is
// at the even places.
void enter(const Contest& contest);

}  // namespace brindle::bench
