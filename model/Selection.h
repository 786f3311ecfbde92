#pragma once

class clsAccount;
class clsAccountTrigger;

// What the console has selected in its navigator: one account and one of its
// triggers, or nothing. Process-wide, read and written on the interface
// thread. A trigger clears SelectedTrigger when it ends while selected.
inline clsAccount *SelectedAccount = nullptr;
inline clsAccountTrigger *SelectedTrigger = nullptr;
