-- The blank database of the built-in mail server: its SMTP queue and the
-- white list of trusted senders.
PRAGMA journal_mode=WAL;

CREATE TABLE Queue (
  RecordNo        INTEGER PRIMARY KEY AUTOINCREMENT,
  DateAdded       DATETIME,
  Retries         INTEGER DEFAULT 0,
  NextRetry       DATETIME,
  FromHost        TEXT,
  MailTo          TEXT,
  LastHost        TEXT,
  LastStatus      TEXT,
  LastResponse    TEXT,
  FileName        TEXT,
  Relayed         TEXT,
  Done            VARCHAR(1) DEFAULT 'N',
  LastTranscript  TEXT
);
CREATE INDEX Queue_key1 ON Queue(Done);
CREATE INDEX Queue_key2 ON Queue(FileName);

-- Type: 1 IP addresses, 2 mail addresses, 3 words, 4 locations, 5 file types.
CREATE TABLE WhiteList (
  Token           TEXT NOT NULL,
  Type            INTEGER NOT NULL,
  Dated           TEXT
);
CREATE INDEX WhiteList_key1 ON WhiteList(Type, Token);

INSERT INTO WhiteList (Token, Type, Dated) VALUES ('127.0.0.1', 1, datetime('now'));
INSERT INTO WhiteList (Token, Type, Dated) VALUES ('192.168.*', 1, datetime('now'));
INSERT INTO WhiteList (Token, Type, Dated) VALUES ('10.*', 1, datetime('now'));
INSERT INTO WhiteList (Token, Type, Dated) VALUES ('172.16.*', 1, datetime('now'));
