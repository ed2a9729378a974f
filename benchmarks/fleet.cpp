// Many installations and their one update server over two weeks, the second of which begins with an outage: what the
// server has to carry, by what their policies say. Prints the tables of docs/servers.md; same seed, same tables.
//   cmake --preset bench && cmake --build build/bench --target fleet
//   build/bench/bin/fleet [INSTALLATIONS [SEED [CROWD [SPREAD [KIB [OUTAGE]]]]]]
//   by default 1000000 1 5 60 1024 1: minutes around nine, minutes of msSpread, size of the catalogue, 0 for no outage
//
// The model: an installation has a time zone and an interval. Most are desks, which start at nine on workdays and end
// in the evening or stay on; the others run always. A check is two requests, catalogue and signature. What one does
// depends on no other, so each is lived through by itself. Times are milliseconds since a Sunday, 0:00 UTC, in winter.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace {

using Ms = std::int64_t;
using Shares = std::vector<std::pair<Ms, int>>; // values, each with its percentage

constexpr Ms second = 1000, minute = 60 * second, hour = 60 * minute, day = 24 * hour, week = 7 * day, end = 2 * week;
constexpr Ms outageBegin = week + day + 7 * hour + 30 * minute, outageEnd = outageBegin + 4 * hour; // Europe's Monday
constexpr Ms published[] = { 2 * day + 10 * hour, 4 * day + 14 * hour }; // a new catalogue, Tuesdays and Thursdays
constexpr Ms msHostsDelay = 5000;                                        // of doInitialCheck()

constexpr int percentDesks = 85, percentPresent = 90, percentLeftOn = 15;
const Shares intervals = { { 0, 70 }, { day, 15 }, { week, 10 }, { 30 * day, 5 } }; // most leave what they find
const Shares zones = { { -480, 8 }, { -420, 2 }, { -360, 7 }, { -300, 10 }, { -240, 1 }, { -180, 4 }, // minutes east
                       { 0, 9 },    { 60, 26 },  { 120, 6 },  { 180, 4 },   { 240, 1 },  { 330, 4 },
                       { 420, 2 },  { 480, 8 },  { 540, 6 },  { 600, 2 } };

constexpr double fullBytes = 827, unchangedBytes = 399; // of both answers, less the catalogue: benchmarks/load

enum Option { Installations, Seed, Crowd, Spread, Kib, Outage, OptionCount };
long options[OptionCount] = { 1000000, 1, 5, 60, 1024, 1 };

struct Policy
{
    bool hasCache = false;
    Ms spread = 0;
    bool hasMirrors = false;
};

/// SplitMix64: the distributions of the standard library differ from one to the next.
struct Random
{
    std::uint64_t state;

    std::uint64_t next()
    {
        std::uint64_t z = (state += 0x9e3779b97f4a7c15);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
        z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
        return z ^ (z >> 31);
    }
    Ms below(Ms limit) { return limit > 0 ? Ms(next() % std::uint64_t(limit)) : 0; }
    bool chance(int percent) { return below(100) < percent; }
    Ms pick(const Shares &shares)
    {
        auto share = shares.begin();
        for (Ms rest = below(100) - share->second; rest >= 0; rest -= share->second)
            ++share;
        return share->first;
    }
};

/// What the server had to do, and who waited for it.
struct Load
{
    std::vector<double> requests = std::vector<double>(end / second), bytes = requests; // in each second
    double checks = 0, unchanged = 0, failed = 0, byMirrors = 0;
    std::vector<Ms> waits; // of those whom the outage cut off: from its end to an answer

    static double mean(const std::vector<double> &counts) { return peak(counts, end); }
    static double peak(const std::vector<double> &counts, Ms span, Ms from = 0, Ms to = end)
    {
        double most = 0;
        for (auto at = counts.begin() + from / second; at < counts.begin() + to / second; at += span / second)
            most = std::max(most, std::accumulate(at, at + span / second, 0.0));
        return most * double(second) / double(span);
    }
};

/// Which catalogue is the newest then, also before the beginning.
Ms editionAt(Ms at)
{
    const Ms weeks = (at + 100 * week) / week, rest = (at + 100 * week) % week;
    return 2 * weeks + Ms(published[0] <= rest) + Ms(published[1] <= rest);
}

struct Installation
{
    const Policy &policy;
    const Ms crowd;
    Load &load;
    Random habits, dice; // apart, so that all policies meet the same people
    const Ms east = habits.pick(zones) * minute, interval = habits.pick(intervals);
    Ms lastCheck = 0, known = 0;
    int failures = 0;
    bool isCutOff = false;

    void live()
    {
        const bool isDesk = habits.chance(percentDesks);
        const Ms weekday = -2 - habits.below(interval > day ? 5 : 1), weeksAgo = habits.below(interval > week ? 4 : 1);
        lastCheck = isDesk ? nineOClock(weekday - 7 * weeksAgo) + hour : -habits.below(interval);
        known = editionAt(lastCheck);
        if (!isDesk)
            return run(-habits.below(hour), end);
        bool isOn = false;
        Ms begin = 0;
        for (const Ms today : { 1, 2, 3, 4, 5, 8, 9, 10, 11, 12 }) { // no Saturday, no Sunday
            if (!isOn && (isOn = habits.chance(percentPresent)))
                begin = nineOClock(today);
            if (isOn && !habits.chance(percentLeftOn)) { // through the night, or the weekend
                run(begin, today * day - east + 17 * hour + habits.below(2 * hour));
                isOn = false;
            }
        }
        if (isOn)
            run(begin, end);
    }

    /// At most the crowd's minutes off, most often next to none.
    Ms nineOClock(Ms today)
    {
        return today * day - east + 9 * hour - crowd + habits.below(crowd) + habits.below(crowd);
    }

    void run(Ms begin, Ms finish)
    {
        for (Ms at = next(begin, true); at >= 0 && at < std::min(finish, end); at = next(begin, false))
            check(at);
    }

    /// When the application that began then checks next; -1: never.
    Ms next(Ms begin, bool isStart)
    {
        const bool isRetry = failures > 0 && policy.spread > 0;
        if (interval == 0 && !isStart && !isRetry)
            return -1;
        const Ms retry = lastCheck + std::min(24, 1 << std::clamp(failures - 1, 0, 5)) * hour;
        const Ms due = isRetry ? 0 : std::max<Ms>(0, lastCheck + interval - begin);
        const Ms turn = begin + (interval == 0 ? msHostsDelay : (due / hour + 1) * hour); // hourly ticks, and later
        return (!isRetry ? turn : isStart ? std::max(turn, retry) : retry) + dice.below(policy.spread);
    }

    void check(Ms at)
    {
        lastCheck = at;
        const bool isDown = options[Outage] != 0 && at >= outageBegin && at < outageEnd;
        if (isDown && !policy.hasMirrors) {
            ++load.failed;
            if (!std::exchange(isCutOff, true))
                load.waits.push_back(end); // until there is an answer
            ++failures;
            return;
        }
        const bool isUnchanged = policy.hasCache && known == editionAt(at);
        if (!isUnchanged)
            known = isDown ? -1 : editionAt(at); // of a mirror, which the server does not know by its tag
        failures = 0;
        ++load.checks;
        load.unchanged += isUnchanged && !isDown;
        load.byMirrors += isDown;
        if (isDown)
            return;
        load.requests[size_t(at / second)] += 2;
        load.bytes[size_t(at / second)] += isUnchanged ? unchangedBytes : fullBytes + 1024.0 * double(options[Kib]);
        if (std::exchange(isCutOff, false))
            load.waits.back() = at - outageEnd; // the others come later
    }
};

Load simulate(const Policy &policy, Ms crowd)
{
    Load load;
    Random seeds { std::uint64_t(options[Seed]) };
    for (long i = 0; i < options[Installations]; ++i) {
        const std::uint64_t seed = seeds.next();
        Installation { policy, crowd * minute, load, Random { seed }, Random { ~seed } }.live();
    }
    std::sort(load.waits.begin(), load.waits.end());
    return load;
}

using Figures = std::vector<std::pair<const char *, double>>;

Figures figuresOf(const Load &load)
{
    const auto &asked = load.requests, &sent = load.bytes;
    const Ms wait = load.waits.empty() ? 0 : load.waits[load.waits.size() * 99 / 100];
    return { { "requests a second, mean", load.mean(asked) },
             { "- in the busiest second", load.peak(asked, second) },
             { "- in the busiest minute", load.peak(asked, minute) },
             { "- in the busiest minute of the 12 hours after the outage",
               load.peak(asked, minute, outageEnd, outageEnd + 12 * hour) },
             { "Mbit a second, mean", load.mean(sent) * 8e-6 },
             { "- in the busiest minute", load.peak(sent, minute) * 8e-6 },
             { "- in the busiest minute of the first Monday", load.peak(sent, minute, day, 2 * day) * 8e-6 },
             { "GB in the two weeks", load.mean(sent) * double(end / second) * 1e-9 },
             { "checks, thousands", load.checks * 1e-3 },
             { "- of these unchanged, %", 100 * load.unchanged / std::max(1.0, load.checks) },
             { "- that failed in the outage, thousands", load.failed * 1e-3 },
             { "- that mirrors answered, thousands", load.byMirrors * 1e-3 },
             { "hours until 99 % of those cut off had an answer",
               wait < end ? double(wait) / double(hour) : INFINITY } };
}

void printRow(const std::string &name, const std::vector<double> &values)
{
    std::printf("| %s |", name.c_str());
    for (const double value : values)
        std::printf(std::isinf(value) ? " later |" : " %.*f |", value < 10 ? 2 : int(value < 100), value);
    std::printf("\n");
}

} // namespace

int main(int argc, char **argv)
{
    for (int i = 1; i < std::min<int>(argc, OptionCount + 1); ++i)
        options[i - 1] = std::max(0L, std::atol(argv[i]));
    std::printf("%ld installations, seed %ld; starts %ld minutes around nine, a spread of %ld minutes, %ld KiB.\n\n",
                options[Installations], options[Seed], options[Crowd], options[Spread], options[Kib]);

    const Ms spread = options[Spread] * minute;
    std::vector<Figures> columns;
    for (const Policy &policy : { Policy(), { true }, { false, spread }, { true, spread }, { true, spread, true } })
        columns.push_back(figuresOf(simulate(policy, options[Crowd])));
    std::puts("| | by default | `catalogueCache` | `msSpread` | both | both, `mirrors` |\n|---|---|---|---|---|---|");
    for (size_t i = 0; i < columns.front().size(); ++i) {
        std::vector<double> row;
        for (const auto &column : columns)
            row.push_back(column[i].second);
        printRow(columns.front()[i].first, row);
    }

    std::puts("\n| starts | a second, busiest minute | with `msSpread` | factor |\n|---|---|---|---|");
    for (const int crowd : { 1, 5, 15, 30 }) {
        const Load before = simulate({}, crowd), after = simulate({ false, spread }, crowd);
        const double most = before.peak(before.requests, minute), less = after.peak(after.requests, minute);
        printRow("within " + std::to_string(crowd) + " minutes around nine", { most, less, most / less });
    }
}
