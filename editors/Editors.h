#pragma once

// Tells the main window how to open the editors of this folder, and the
// action dialog the controls of the action kinds.
void RegisterEditors();
