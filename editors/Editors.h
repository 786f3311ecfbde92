#pragma once

// Tells the main window how to open the editors of this folder.
void RegisterEditors();
