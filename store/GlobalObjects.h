#pragma once
#include "clsEventLog.h"
#include "clsMessage.h"

// The console's process-wide stand-by message and event log.
//
// SampleMessage is what token previews and test runs use until a real
// message is chosen; CreateSampleMessage (re)makes it with its fixed test
// content. EventLog is made on first use.
clsMessage &SampleMessage();
void CreateSampleMessage();
clsEventLog &EventLog();
// Closes and drops the event log.
void ReleaseEventLog();
