#pragma once
#include <QString>

// GET of a command through the session: true when the server answered and
// did not refuse. A refusal is a reply beginning "Error:", which the
// session shows in the message bar; the caller then changes nothing.
bool ServerCommand(const QString &URL);
