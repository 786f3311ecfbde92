#pragma once

// Plugs the editor controls of the message kinds (Message, Forward, SMS,
// VCal, Fax, Popup, Jabber, Validation) into the action dialog.
void RegisterMessageActionEditors();
