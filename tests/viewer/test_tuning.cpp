// The tuning table on series with known answers: white noise averaged over k readings shrinks
// by sqrt(k), a clean step settles in M ms at integration M, and readings that make no table
// say why.

#include "viewer/tuning.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace torv::viewer;

namespace {

std::vector<double> stepAt(std::size_t n, std::size_t at, double low, double high) {
    std::vector<double> v(n, low);
    std::fill(v.begin() + std::ptrdiff_t(at), v.end(), high);
    return v;
}

std::vector<int> integrations(const TuningTable& t) {
    std::vector<int> m;
    for (const TuningRow& r : t.rows)
        m.push_back(r.integrationMs);
    return m;
}

} // namespace

TEST(Tuning, WhiteNoiseAveragedOverKReadingsShrinksBySqrtK) {
    std::mt19937 rng(11);
    std::normal_distribution<double> noise(0.0, 0.5);
    std::vector<double> v(200000);
    for (double& x : v)
        x = 1500.0 + noise(rng);
    const TuningTable t = tuningTable(v, {2, 0, v.size(), {}});
    ASSERT_TRUE(t.error.isEmpty()) << qPrintable(t.error);
    EXPECT_FALSE(t.step) << "noise alone is no step";
    EXPECT_EQ(integrations(t), (std::vector<int>{2, 4, 8, 12, 16, 32, 64, 128, 256}));
    for (const TuningRow& r : t.rows) {
        ASSERT_TRUE(r.noiseSd) << r.integrationMs;
        EXPECT_NEAR(*r.noiseSd, 0.5 / std::sqrt(r.readingsAveraged),
                    0.05 * 0.5 / std::sqrt(r.readingsAveraged))
            << "integration " << r.integrationMs;
        EXPECT_GT(*r.noisePeakToPeak, 4 * *r.noiseSd) << r.integrationMs;
        EXPECT_FALSE(r.settlingMs) << r.integrationMs;
    }
    EXPECT_NEAR(t.band, 1.0, 0.02) << "two raw standard deviations";
}

TEST(Tuning, ACleanStepSettlesInMMillisecondsAtIntegrationM) {
    struct Case {
        double integration;
        std::vector<int> rows;
    } cases[] = {{2, {2, 4, 8, 12, 16, 32, 64, 128, 256}},
                 {8, {8, 16, 32, 64, 128, 256}},
                 {4, {4, 8, 12, 16, 32, 64, 128, 256}}};
    for (const Case& c : cases) {
        const std::vector<double> v = stepAt(4000, 2500, 12.345, 512.345);
        const TuningTable t = tuningTable(v, {c.integration, 0, v.size(), {}});
        ASSERT_TRUE(t.error.isEmpty()) << qPrintable(t.error);
        ASSERT_TRUE(t.step) << "integration " << c.integration;
        EXPECT_EQ(t.step->position, 2500u);
        EXPECT_DOUBLE_EQ(t.step->after - t.step->before, 500.0);
        EXPECT_EQ(t.stretchLast, 2499u) << "the longer side of the view, before the step";
        EXPECT_EQ(integrations(t), c.rows);
        for (const TuningRow& r : t.rows) {
            ASSERT_TRUE(r.settlingMs) << r.integrationMs;
            EXPECT_EQ(*r.settlingMs, r.integrationMs);
            EXPECT_EQ(*r.noiseSd, 0.0) << r.integrationMs;
        }
    }
}

TEST(Tuning, NoisyStepSettlesLaterWithMoreAveragingAndIsMeasuredOnTheSteadySide) {
    std::mt19937 rng(5);
    std::normal_distribution<double> noise(0.0, 0.01);
    std::vector<double> v = stepAt(20000, 6000, 10.0, 20.0);
    for (double& x : v)
        x += noise(rng);
    const TuningTable t = tuningTable(v, {2, 0, v.size(), {}});
    ASSERT_TRUE(t.step);
    EXPECT_EQ(t.step->position, 6000u);
    EXPECT_EQ(t.stretchFirst, 6001u) << "the longer side, after the step";
    EXPECT_NEAR(t.rawSd, 0.01, 0.001);
    // A wide band: every integration settles within one reading of its own length.
    const TuningTable wide = tuningTable(v, {2, 0, v.size(), 0.2});
    for (const TuningRow& r : wide.rows) {
        ASSERT_TRUE(r.settlingMs) << r.integrationMs;
        EXPECT_NEAR(*r.settlingMs, r.integrationMs, 2 * r.integrationMs / r.readingsAveraged)
            << r.integrationMs;
    }
}

TEST(Tuning, ReadingsThatMakeNoTableSayWhy) {
    const std::vector<double> eight(8, 1.0);
    struct Case {
        std::vector<double> values;
        double integration;
        const char* error;
    } cases[] = {{std::vector<double>(7, 1.0), 2, "too short: 7 readings"},
                 {eight, 0, "integration is unknown"},
                 {eight, 2.5, "not a whole number"},
                 {eight, 512, "no integration of the card's list"}};
    for (const Case& c : cases) {
        const TuningTable t = tuningTable(c.values, {c.integration, 0, c.values.size(), {}});
        EXPECT_TRUE(t.error.contains(QLatin1String(c.error))) << qPrintable(t.error);
        EXPECT_TRUE(t.rows.empty());
    }
    const TuningTable twelve = tuningTable(std::vector<double>(100, 3.0), {12, 0, 100, {}});
    EXPECT_EQ(integrations(twelve), std::vector<int>{12}) << "12 divides no larger integration";
    EXPECT_TRUE(tuningTable(eight, {2, 3, 4, {}}).error.contains(QLatin1String("fewer than 2")));
}

TEST(Tuning, ReportRowsGiveNoiseInDivisionsAndLeaveSettlingEmptyWithoutAStep) {
    std::vector<double> v;
    for (int i = 0; i < 8; ++i)
        v.push_back(i % 2 ? 12.0 : 10.0);
    EXPECT_EQ(tuningCsv(tuningTable(v, {2, 0, v.size(), {}}), 0.5).toStdString(),
              "integration_ms,readings_averaged,noise_sd,noise_peak_to_peak,settling_ms\n"
              "2,1,2.13809,4,\n4,2,0,0,\n8,4,0,0,\n12,6,0,0,\n");
    EXPECT_EQ(tuningCsv(tuningTable(stepAt(40, 20, 0, 1), {64, 0, 40, {}})).toStdString(),
              "integration_ms,readings_averaged,noise_sd,noise_peak_to_peak,settling_ms\n"
              "64,1,0,0,64\n128,2,0,0,128\n256,4,0,0,256\n");
}
