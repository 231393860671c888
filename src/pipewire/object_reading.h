#pragma once

#include "pipewire/graph.h"

#include <spa/utils/dict.h>

namespace sonvel::pipewire {

// What the properties of the server's objects say, whatever programs have written into them. Missing and
// unreadable ones leave the defaults.

Node readNode(const spa_dict* properties);
Port readPort(const spa_dict* properties);
Link readLink(const spa_dict* properties);

/// Also reads the /proc link of the client's process.
void readClient(const spa_dict* properties, Client& client);

/// The `name` member of a small JSON object; empty without one.
std::string nameInJSON(const char* text);

} // namespace sonvel::pipewire
