-- The blank inbound queue, a file of its own so that a burst of inbound
-- messages does not contend with the store.
PRAGMA journal_mode=WAL;

CREATE TABLE EdgeQueue (
  RecordNo                    INTEGER PRIMARY KEY AUTOINCREMENT,
  AccountID                   VARCHAR(20),
  Source                      VARCHAR(10),
  UID                         VARCHAR(250),
  ValidateActionID            TEXT,
  ValidateInputFieldsXML      TEXT,
  ValidateExpires             DATETIME,
  ValidateExpiresType         INTEGER DEFAULT 0,
  ValidateConfirmationMessage TEXT,
  DateAdded                   DATETIME,
  MessageDate                 DATETIME,
  Mime                        TEXT,
  Processed                   INTEGER DEFAULT 0,
  -- The processor process that took the row (Processed 1): host, process
  -- id and its start time. The row of a process that no longer runs goes
  -- back to 0 when a processor starts.
  TakenBy                     VARCHAR(100)
);
CREATE INDEX EdgeQueue_key1 ON EdgeQueue(Processed, RecordNo);
CREATE INDEX EdgeQueue_key2 ON EdgeQueue(Source, AccountID, UID);
CREATE INDEX EdgeQueue_key3 ON EdgeQueue(AccountID, MessageDate);
