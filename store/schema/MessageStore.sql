-- The blank message store: every table of the store but EdgeQueue.
-- WAL journaling is kept in the file, so readers never block the writer.
PRAGMA journal_mode=WAL;

CREATE TABLE MessageStore (
  RecordNo        INTEGER PRIMARY KEY AUTOINCREMENT,
  AccountID       VARCHAR(20),
  OrganizationID  VARCHAR(20),
  Source          VARCHAR(10),
  UID             VARCHAR(250),
  Subject         TEXT,
  FromAddress     TEXT,
  ToAddress       TEXT,
  MessageDate     DATETIME,
  Importance      VARCHAR(1),
  Sensitivity     VARCHAR(1),
  TriggerID       VARCHAR(20),
  TriggerMatch    BOOLEAN,
  TriggerSuccess  BOOLEAN,
  TriggerError    TEXT,
  Body            TEXT,
  Headers         TEXT,
  Attachments     BOOLEAN,
  HasFullBody     BOOLEAN,
  ProcessedDate   DATETIME,
  MessageFlags    INTEGER,
  FolderID        VARCHAR(20),
  Keywords        TEXT,
  Guid            VARCHAR(32),
  MessageSize     INTEGER DEFAULT 0,
  MessageDigest   VARCHAR(1000),
  AttachmentNames VARCHAR(1000)
);
CREATE INDEX MessageStore_key1 ON MessageStore(MessageDate);
CREATE INDEX MessageStore_key2 ON MessageStore(AccountID, MessageDate);
CREATE INDEX MessageStore_key3 ON MessageStore(FolderID, MessageDate);
CREATE INDEX MessageStore_key4 ON MessageStore(TriggerID);
CREATE INDEX MessageStore_key5 ON MessageStore(OrganizationID, MessageDate);
CREATE INDEX MessageStore_key6 ON MessageStore(Guid);
CREATE INDEX MessageStore_key7 ON MessageStore(Source, AccountID, UID);

CREATE TABLE Pending (
  RecordNo        INTEGER PRIMARY KEY AUTOINCREMENT,
  UID             VARCHAR(250),
  OrganizationID  VARCHAR(20),
  AccountID       VARCHAR(20),
  TriggerID       VARCHAR(20),
  Headers         TEXT,
  Message         TEXT,
  DateAdded       DATETIME,
  Source          VARCHAR(10)
);
CREATE INDEX Pending_key1 ON Pending(UID);
CREATE INDEX Pending_key2 ON Pending(DateAdded);
CREATE INDEX Pending_key3 ON Pending(AccountID);
CREATE INDEX Pending_key4 ON Pending(OrganizationID);

CREATE TABLE Outbox (
  RecordNo        INTEGER PRIMARY KEY AUTOINCREMENT,
  AccountID       VARCHAR(20),
  TriggerID       VARCHAR(20),
  ReferenceID     VARCHAR(250),
  DateAdded       DATETIME,
  ScheduledDate   DATETIME,
  Scheduled       BOOLEAN DEFAULT 0,
  Subject         TEXT,
  MailTo          TEXT,
  MailFrom        TEXT,
  Importance      INTEGER DEFAULT 0,
  Attachments     BOOLEAN DEFAULT 0,
  Mime            TEXT,
  SMS             BOOLEAN DEFAULT 0,
  Status          INTEGER DEFAULT 0
);
CREATE INDEX Outbox_key1 ON Outbox(ScheduledDate);
CREATE INDEX Outbox_key2 ON Outbox(AccountID);
CREATE INDEX Outbox_key3 ON Outbox(TriggerID);

CREATE TABLE Scheduled (
  RecordNo        INTEGER PRIMARY KEY AUTOINCREMENT,
  Sent            BOOLEAN DEFAULT 0,
  SendOnDate      DATETIME
);
CREATE INDEX Scheduled_key1 ON Scheduled(SendOnDate);

CREATE TABLE Folders (
  RecordNo        INTEGER PRIMARY KEY AUTOINCREMENT,
  FolderID        VARCHAR(20),
  AccountID       VARCHAR(20),
  OrganizationID  VARCHAR(20),
  Parent          VARCHAR(20),
  UserID          VARCHAR(20),
  FolderName      TEXT,
  Email           TEXT,
  OrderBy         INTEGER DEFAULT 0
);
CREATE INDEX Folders_key1 ON Folders(UserID, OrderBy);
CREATE INDEX Folders_key2 ON Folders(AccountID);
CREATE INDEX Folders_key3 ON Folders(OrganizationID);

CREATE TABLE FolderFlags (
  UserID          VARCHAR(20) NOT NULL,
  FolderID        VARCHAR(20) NOT NULL,
  Subscribed      BOOLEAN DEFAULT 0,
  LastRecord      INTEGER DEFAULT 0,
  Flags           INTEGER DEFAULT 0,
  PRIMARY KEY (UserID, FolderID)
);

CREATE TABLE MessageFlags (
  UserID          VARCHAR(20) NOT NULL,
  FolderID        VARCHAR(20) NOT NULL,
  RecordNo        INTEGER NOT NULL,
  Flags           INTEGER DEFAULT 0,
  PRIMARY KEY (UserID, FolderID, RecordNo)
);

CREATE TABLE Users (
  UserID          VARCHAR(20) NOT NULL PRIMARY KEY,
  UserName        VARCHAR(250),
  Password        VARCHAR(250),
  FullName        VARCHAR(250),
  OrganizationID  VARCHAR(20),
  Organization    TEXT,
  Email           TEXT,
  XML             TEXT
);
CREATE INDEX Users_key1 ON Users(UserName);
CREATE INDEX Users_key2 ON Users(OrganizationID);

CREATE TABLE Organizations (
  ID              VARCHAR(20) NOT NULL PRIMARY KEY,
  Name            TEXT,
  XML             TEXT
);

CREATE TABLE DaySummary (
  OrganizationID  VARCHAR(20),
  AccountID       VARCHAR(20) NOT NULL,
  Dated           DATETIME NOT NULL,
  LastTime        DATETIME,
  MessagesIn      INTEGER DEFAULT 0,
  MessagesOut     INTEGER DEFAULT 0,
  BytesIn         INTEGER DEFAULT 0,
  PRIMARY KEY (AccountID, Dated)
);
CREATE INDEX DaySummary_key1 ON DaySummary(OrganizationID);

CREATE TABLE DaySummaryToken (
  OrganizationID  VARCHAR(20),
  AccountID       VARCHAR(20) NOT NULL,
  TokenType       INTEGER NOT NULL,
  Token           VARCHAR(250) NOT NULL,
  Dated           DATETIME NOT NULL,
  Count           INTEGER DEFAULT 0,
  PRIMARY KEY (AccountID, TokenType, Token, Dated)
);
CREATE INDEX DaySummaryToken_key1 ON DaySummaryToken(OrganizationID);

CREATE TABLE DaySummaryTokenTypes (
  OrganizationID  VARCHAR(20) NOT NULL,
  TokenType       INTEGER NOT NULL,
  TokenTypeDesc   VARCHAR(250),
  PRIMARY KEY (OrganizationID, TokenType)
);
