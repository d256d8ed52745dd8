#pragma once

#include "faultplan.h"

namespace simulation::faults {

/// How a number of a fault text is given.
enum class Unit
{
    None, ///< there is no number
    Whole,
    Seconds ///< with decimals; kept in ms
};

/// A number behind a word: its limits, and what to call it.
struct Number
{
    Unit unit = Unit::None;
    bool isRequired = false;
    int min = 0; ///< for seconds, in ms
    int max = 0;
    const char* meaning = "";
};

struct FaultRow
{
    const char* name;
    Kind kind;
    Number amount;
};

// clang-format off
constexpr FaultRow faultRows[] = {
    {"no-answer",  Kind::NoAnswer,   {}},
    {"late",       Kind::Late,       {Unit::Whole,   true,    1,   60000, "MS"}},
    {"wrong-crc",  Kind::WrongCrc,   {}},
    {"wrong-unit", Kind::WrongUnit,  {}},
    {"truncated",  Kind::Truncated,  {Unit::Whole,   false,   1,     259, "BYTES"}},
    {"duplicated", Kind::Duplicated, {}},
    {"split",      Kind::Split,      {Unit::Whole,   false,   1,    1000, "GAP_MS"}},
    {"exception",  Kind::Exception,  {Unit::Whole,   true,    1,     255, "CODE"}},
    {"noise",      Kind::Noise,      {Unit::Whole,   false,   1,     256, "BYTES"}},
    {"reset",      Kind::Reset,      {}},
    {"refused",    Kind::Refused,    {Unit::Seconds, false, 100, 3600000, "SECONDS"}},
    {"black-hole", Kind::BlackHole,  {Unit::Seconds, false, 100, 3600000, "SECONDS"}},
    {"none",       Kind::None,       {}},
};

struct SelectorRow
{
    const char* name;
    std::optional<int> Plan::*selector;
    Number value;
};

constexpr SelectorRow selectorRows[] = {
    {"address",  &Plan::address,  {Unit::Whole, true, 1,     247, "ADDRESS"}},
    {"function", &Plan::function, {Unit::Whole, true, 1,     127, "CODE"}},
    {"block",    &Plan::block,    {Unit::Whole, true, 0,   65535, "REGISTER"}},
    {"request",  &Plan::request,  {Unit::Whole, true, 1, 1000000, "N"}},
    {"times",    &Plan::times,    {Unit::Whole, true, 1, 1000000, "N"}},
};

constexpr Number lifetimeNumber = {Unit::Seconds, true, 100, 86400000, "SECONDS"};
// clang-format on

} // namespace simulation::faults
