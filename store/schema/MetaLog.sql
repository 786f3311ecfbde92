-- The blank log, copied for each log file that does not exist yet.
PRAGMA journal_mode=WAL;

CREATE TABLE EventLog (
  ID              INTEGER PRIMARY KEY AUTOINCREMENT,
  DateStamp       DATETIME,
  AccountID       VARCHAR(20),
  TriggerID       VARCHAR(20),
  UID             VARCHAR(250),
  Detail          TEXT
);
CREATE INDEX EventLog_key1 ON EventLog(DateStamp);
CREATE INDEX EventLog_key2 ON EventLog(UID);
