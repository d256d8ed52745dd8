#pragma once

/// The tables of a journal's file.
namespace schema {

/// Kept in the file's header ("UPSJ"): a database of another program is never written to.
constexpr int applicationId = 0x5550534A;

// clang-format off
/// The columns of the data log after time and unit, in the order of a row's values.
constexpr const char* logColumns[] = {
    "input_voltage",    "input_frequency", "bypass_voltage",     "bypass_frequency", "output_voltage",
    "output_current",   "output_power",    "output_load",        "output_frequency", "output_mode",
    "battery_capacity", "battery_voltage", "battery_current",    "battery_temperature", "battery_state",
};

/// Brings an empty file to version 1. The ids grow in order of arrival, whatever the clock does.
constexpr const char* toVersion1[] = {
    "PRAGMA application_id = 1431327562",

    "CREATE TABLE event ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT, time_ms INTEGER NOT NULL, unit TEXT NOT NULL,"
    " type INTEGER NOT NULL, code INTEGER, text TEXT NOT NULL, state INTEGER, record TEXT NOT NULL)",
    "CREATE INDEX event_time ON event (time_ms)",
    "CREATE INDEX event_unit_time ON event (unit, time_ms)",

    "CREATE TABLE period ("
    " unit TEXT NOT NULL, from_ms INTEGER NOT NULL, to_ms INTEGER, ending TEXT,"
    " PRIMARY KEY (unit, from_ms))",
    "CREATE INDEX period_to ON period (to_ms)",

    "CREATE TABLE data_log ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT, time_ms INTEGER NOT NULL, unit TEXT NOT NULL,"
    " input_voltage TEXT, input_frequency TEXT, bypass_voltage TEXT, bypass_frequency TEXT,"
    " output_voltage TEXT, output_current TEXT, output_power TEXT, output_load TEXT,"
    " output_frequency TEXT, output_mode TEXT, battery_capacity TEXT, battery_voltage TEXT,"
    " battery_current TEXT, battery_temperature TEXT, battery_state TEXT)",
    "CREATE INDEX data_log_time ON data_log (time_ms)",
    "CREATE INDEX data_log_unit_time ON data_log (unit, time_ms)",
    "CREATE TABLE data_log_heading (position INTEGER PRIMARY KEY, text TEXT NOT NULL)",

    // One row: when the file was last written, by which run of the writer, and how many batches of it.
    "CREATE TABLE writer ("
    " id INTEGER PRIMARY KEY CHECK (id = 1), alive_ms INTEGER NOT NULL, run TEXT NOT NULL,"
    " batches INTEGER NOT NULL)",
    "INSERT INTO writer VALUES (1, 0, '', 0)",
};
// clang-format on
static_assert(applicationId == 1431327562, "the number in the statement above");

/// The statements that lead from one version to the next.
struct Step
{
    const char* const* statements;
    int count;
};

/// Step n leads from version n to n + 1. A released step is never changed, a new one is added.
constexpr Step steps[] = {{toVersion1, sizeof(toVersion1) / sizeof(toVersion1[0])}};

/// Kept in the file's header as "user_version".
constexpr int version = sizeof(steps) / sizeof(steps[0]);

} // namespace schema
