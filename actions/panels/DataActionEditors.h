#pragma once

// Plugs the editor controls of the data kinds into the action dialog:
// DatabaseUpdate, DatabaseUpdateCustom, Azure, CSV, Excel, TextFile,
// UpdateToken and Report.
void RegisterDataActionEditors();
