#pragma once

#include "tests/failing/Scenario.h"

// The scenarios. Each has a directory to itself.

CScenario* MakeSafeSettings(const std::string& strDirectory);
CScenario* MakePlainSettings(const std::string& strDirectory);
CScenario* MakeLine(const std::string& strDirectory);
CScenario* MakePort(const std::string& strDirectory);
CScenario* MakeDaemon(const std::string& strDirectory);
CScenario* MakeDetach(const std::string& strDirectory);
CScenario* MakeLoop(const std::string& strDirectory);
CScenario* MakeStore(const std::string& strDirectory);
CScenario* MakeChild(const std::string& strDirectory);
CScenario* MakeLog(const std::string& strDirectory);
CScenario* MakeZone(const std::string& strDirectory);
