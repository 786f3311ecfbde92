-- The message store on SQL Server: every table of MessageStore.db3 and
-- EdgeQueue.db3 in one database, and the two stored procedures the store
-- calls. Run it once in the database that DBConnection names.

CREATE TABLE MessageStore (
  RecordNo        INT IDENTITY(1,1) PRIMARY KEY,
  AccountID       VARCHAR(20),
  OrganizationID  VARCHAR(20),
  Source          VARCHAR(10),
  UID             VARCHAR(250),
  Subject         NVARCHAR(1000),
  FromAddress     NVARCHAR(250),
  ToAddress       NVARCHAR(250),
  MessageDate     DATETIME,
  Importance      CHAR(1),
  Sensitivity     CHAR(1),
  TriggerID       VARCHAR(20),
  TriggerMatch    BIT,
  TriggerSuccess  BIT,
  TriggerError    NVARCHAR(250),
  Body            NVARCHAR(MAX),
  Headers         NVARCHAR(MAX),
  Attachments     BIT,
  HasFullBody     BIT,
  ProcessedDate   DATETIME,
  MessageFlags    INT,
  FolderID        VARCHAR(20),
  Keywords        NVARCHAR(MAX),
  Guid            CHAR(32),
  MessageSize     INT DEFAULT 0,
  MessageDigest   NVARCHAR(1000),
  AttachmentNames NVARCHAR(1000)
);
CREATE INDEX MessageStore_key1 ON MessageStore(MessageDate);
CREATE INDEX MessageStore_key2 ON MessageStore(AccountID, MessageDate);
CREATE INDEX MessageStore_key3 ON MessageStore(FolderID, MessageDate);
CREATE INDEX MessageStore_key4 ON MessageStore(TriggerID);
CREATE INDEX MessageStore_key5 ON MessageStore(OrganizationID, MessageDate);
CREATE INDEX MessageStore_key6 ON MessageStore(Guid);
CREATE INDEX MessageStore_key7 ON MessageStore(Source, AccountID, UID);
GO

CREATE TABLE EdgeQueue (
  RecordNo                    INT IDENTITY(1,1) PRIMARY KEY,
  AccountID                   VARCHAR(20),
  Source                      VARCHAR(10),
  UID                         VARCHAR(250),
  ValidateActionID            VARCHAR(250),
  ValidateInputFieldsXML      NVARCHAR(MAX),
  ValidateExpires             DATETIME,
  ValidateExpiresType         INT DEFAULT 0,
  ValidateConfirmationMessage NVARCHAR(MAX),
  DateAdded                   DATETIME,
  MessageDate                 DATETIME,
  Mime                        NVARCHAR(MAX),
  Processed                   INT DEFAULT 0,
  TakenBy                     VARCHAR(100)
);
CREATE INDEX EdgeQueue_key1 ON EdgeQueue(Processed, RecordNo);
CREATE INDEX EdgeQueue_key2 ON EdgeQueue(Source, AccountID, UID);
CREATE INDEX EdgeQueue_key3 ON EdgeQueue(AccountID, MessageDate);
GO

CREATE TABLE Pending (
  RecordNo        INT IDENTITY(1,1) PRIMARY KEY,
  UID             VARCHAR(250),
  OrganizationID  VARCHAR(20),
  AccountID       VARCHAR(20),
  TriggerID       VARCHAR(20),
  Headers         NVARCHAR(MAX),
  Message         NVARCHAR(MAX),
  DateAdded       DATETIME,
  Source          VARCHAR(10)
);
CREATE INDEX Pending_key1 ON Pending(UID);
CREATE INDEX Pending_key2 ON Pending(DateAdded);
CREATE INDEX Pending_key3 ON Pending(AccountID);
CREATE INDEX Pending_key4 ON Pending(OrganizationID);
GO

CREATE TABLE Outbox (
  RecordNo        INT IDENTITY(1,1) PRIMARY KEY,
  AccountID       VARCHAR(20),
  TriggerID       VARCHAR(20),
  ReferenceID     VARCHAR(250),
  DateAdded       DATETIME,
  ScheduledDate   DATETIME,
  Scheduled       BIT DEFAULT 0,
  Subject         NVARCHAR(1000),
  MailTo          NVARCHAR(250),
  MailFrom        NVARCHAR(250),
  Importance      INT DEFAULT 0,
  Attachments     BIT DEFAULT 0,
  Mime            NVARCHAR(MAX),
  SMS             BIT DEFAULT 0,
  Status          INT DEFAULT 0
);
CREATE INDEX Outbox_key1 ON Outbox(ScheduledDate);
CREATE INDEX Outbox_key2 ON Outbox(AccountID);
CREATE INDEX Outbox_key3 ON Outbox(TriggerID);
GO

CREATE TABLE Scheduled (
  RecordNo        INT IDENTITY(1,1) PRIMARY KEY,
  Sent            BIT DEFAULT 0,
  SendOnDate      DATETIME
);
CREATE INDEX Scheduled_key1 ON Scheduled(SendOnDate);
GO

CREATE TABLE Folders (
  RecordNo        INT IDENTITY(1,1) PRIMARY KEY,
  FolderID        VARCHAR(20),
  AccountID       VARCHAR(20),
  OrganizationID  VARCHAR(20),
  Parent          VARCHAR(20),
  UserID          VARCHAR(20),
  FolderName      NVARCHAR(250),
  Email           NVARCHAR(1000),
  OrderBy         INT DEFAULT 0
);
CREATE INDEX Folders_key1 ON Folders(UserID, OrderBy);
CREATE INDEX Folders_key2 ON Folders(AccountID);
CREATE INDEX Folders_key3 ON Folders(OrganizationID);
GO

CREATE TABLE FolderFlags (
  UserID          VARCHAR(20) NOT NULL,
  FolderID        VARCHAR(20) NOT NULL,
  Subscribed      BIT DEFAULT 0,
  LastRecord      INT DEFAULT 0,
  Flags           INT DEFAULT 0,
  PRIMARY KEY (UserID, FolderID)
);

CREATE TABLE MessageFlags (
  UserID          VARCHAR(20) NOT NULL,
  FolderID        VARCHAR(20) NOT NULL,
  RecordNo        INT NOT NULL,
  Flags           INT DEFAULT 0,
  PRIMARY KEY (UserID, FolderID, RecordNo)
);

CREATE TABLE Users (
  UserID          VARCHAR(20) NOT NULL PRIMARY KEY,
  UserName        NVARCHAR(250),
  Password        NVARCHAR(250),
  FullName        NVARCHAR(250),
  OrganizationID  VARCHAR(20),
  Organization    NVARCHAR(250),
  Email           NVARCHAR(1000),
  XML             NVARCHAR(MAX)
);
CREATE INDEX Users_key1 ON Users(UserName);
CREATE INDEX Users_key2 ON Users(OrganizationID);

CREATE TABLE Organizations (
  ID              VARCHAR(20) NOT NULL PRIMARY KEY,
  Name            NVARCHAR(250),
  XML             NVARCHAR(MAX)
);
GO

CREATE TABLE DaySummary (
  OrganizationID  VARCHAR(20),
  AccountID       VARCHAR(20) NOT NULL,
  Dated           DATETIME NOT NULL,
  LastTime        DATETIME,
  MessagesIn      INT DEFAULT 0,
  MessagesOut     INT DEFAULT 0,
  BytesIn         BIGINT DEFAULT 0,
  PRIMARY KEY (AccountID, Dated)
);
CREATE INDEX DaySummary_key1 ON DaySummary(OrganizationID);

CREATE TABLE DaySummaryToken (
  OrganizationID  VARCHAR(20),
  AccountID       VARCHAR(20) NOT NULL,
  TokenType       INT NOT NULL,
  Token           NVARCHAR(250) NOT NULL,
  Dated           DATETIME NOT NULL,
  Count           INT DEFAULT 0,
  PRIMARY KEY (AccountID, TokenType, Token, Dated)
);
CREATE INDEX DaySummaryToken_key1 ON DaySummaryToken(OrganizationID);

CREATE TABLE DaySummaryTokenTypes (
  OrganizationID  VARCHAR(20) NOT NULL,
  TokenType       INT NOT NULL,
  TokenTypeDesc   NVARCHAR(250),
  PRIMARY KEY (OrganizationID, TokenType)
);
GO

-- The next queued message waiting to be processed, from @recordno on.
CREATE PROCEDURE GetEdgeMessage
  @recordno INT
AS
BEGIN
  SET NOCOUNT ON;
  SELECT TOP 1 * FROM EdgeQueue
  WHERE Processed = 0 AND RecordNo >= @recordno
  ORDER BY RecordNo;
END
GO

-- @recordno: the row that already holds the identity in the store or the
-- queue; 0 when the message is new.
CREATE PROCEDURE IsNewMessage
  @accountid VARCHAR(20),
  @source    VARCHAR(10),
  @uid       VARCHAR(250),
  @recordno  INT OUTPUT
AS
BEGIN
  SET NOCOUNT ON;
  SET @recordno = 0;
  SELECT TOP 1 @recordno = RecordNo FROM MessageStore
  WHERE AccountID = @accountid AND Source = @source AND UID = @uid;
  IF @recordno = 0
    SELECT TOP 1 @recordno = RecordNo FROM EdgeQueue
    WHERE AccountID = @accountid AND Source = @source AND UID = @uid;
END
GO
