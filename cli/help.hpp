// What "?name" prints at the prompt.
#pragma once

#include <string>
#include <vector>

// The topic of a line "?topic": without arguments, terminators and outer spaces.
std::string helpTopic(const std::string& line);

// The name that is meant by one that is not defined: of what it is called elsewhere, or spelled
// alike; empty for none.
std::string meantName(const std::string& name);

// The entry of a name, a page, or the entries whose names contain or texts mention the topic; an
// overview for none.  sessionNames are names without an entry that contain it.  False where the
// topic is no name.
bool printHelp(const std::string& topic, const std::vector<std::string>& sessionNames);
