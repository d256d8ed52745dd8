#pragma once

class Results;

// One function for each measure: it starts what it needs, measures and adds its rows.

/// A full query over TCP on the loopback interface.
void measureTcp(Results& results);
/// A full query over a pseudo-terminal that takes no time for bytes, and what the traffic log costs.
void measureSerial(Results& results);
/// A full query over a line of 9600 baud.
void measureLine(Results& results);
/// What the collector does for a cycle, without driver and line.
void measureCycle(Results& results);
/// 1 to 256 units in one host.
void measureUnits(Results& results);
/// Loading the plugin.
void measureLoad(Results& results);
/// From the start of a host to its painted window.
void measureWindow(Results& results);
/// The unit's pages.
void measurePages(Results& results);

/// What a fresh process does for measureLoad(): loads the plugin and prints the us that it took.
int loadPluginOnce();
