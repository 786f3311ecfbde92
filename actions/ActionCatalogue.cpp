#include "ActionCatalogue.h"
#include "foundation/GlobalBlock.h"

#include <QHash>

namespace {

// An item whose image is its own item ID.
ActionKind Item(int Group, int ItemID, const QString &Caption, const QString &Key, const QString &Class,
                const QString &ClassDesc, int Icon = 0)
{
    return ActionKind{Group, ItemID, Caption, Key, Class, ClassDesc, Icon ? Icon : ItemID};
}

ActionKind Hidden(const QString &Key, const QString &Class, const QString &ClassDesc)
{
    return ActionKind{0, 0, QString(), Key, Class, ClassDesc, 0};
}

} // namespace

QList<ActionGroup> ActionGroups()
{
    return {
        {1, QStringLiteral("Data"), true},
        {2, QStringLiteral("Outgoing Messages"), true},
        {3, QStringLiteral("Exchange Server"), false},
        {4, QStringLiteral("CRM"), false},
        {5, QStringLiteral("SharePoint"), false},
        {6, QStringLiteral("Windows Azure"), false},
        {7, QStringLiteral("Attachments"), true},
        {8, QStringLiteral("Reporting"), true},
        {9, QStringLiteral("Web"), true},
        {10, QStringLiteral("Social Networks"), true},
        {11, QStringLiteral("Amazon"), false},
        {12, QStringLiteral("System"), true},
        {13, QStringLiteral("Misc"), true},
        {14, QStringLiteral("Logical"), true},
    };
}

// The trailing blanks of "Update Dynamics " and "Update SFDC ", the missing
// blank before "Script" in the script item's caption and the different
// wording of caption and ClassDesc are all as the panel shows them.
QList<ActionKind> ActionCatalogue()
{
    const QString product = Global.ProductName;
    return {
        Item(1, 1000, QStringLiteral("Update A Database - Direct"), QStringLiteral("DatabaseUpdate"),
             QStringLiteral("clsActionDB"), QStringLiteral("Update A Database")),
        Item(1, 1015, QStringLiteral("Update A Database - Custom"), QStringLiteral("DatabaseUpdateCustom"),
             QStringLiteral("clsActionDBCustom"), QStringLiteral("Update A Database Using Custom SQL"), 1000),
        Item(1, 1001, QStringLiteral("Update CSV File"), QStringLiteral("CSV"), QStringLiteral("clsActionCSV"),
             QStringLiteral("Update CSV File")),
        Item(1, 1016, QStringLiteral("Update Excel File"), QStringLiteral("Excel"), QStringLiteral("clsActionExcel"),
             QStringLiteral("Update Excel File")),
        Item(1, 1002, QStringLiteral("Update Outlook Contact"), QStringLiteral("OutlookContact"),
             QStringLiteral("clsActionOutlook"), QStringLiteral("Update Outlook Contact")),
        Item(1, 1017, QStringLiteral("Update Message Store Token"), QStringLiteral("UpdateToken"),
             QStringLiteral("clsActionDBToken"), QStringLiteral("Update Message Store Count For Token")),
        Item(2, 1100, QStringLiteral("Send Email"), QStringLiteral("Message"), QStringLiteral("clsActionMSG"),
             QStringLiteral("Send An Email")),
        Item(2, 1101, QStringLiteral("Send SMS Message"), QStringLiteral("SMS"), QStringLiteral("clsActionSMS"),
             QStringLiteral("Send SMS Message")),
        Item(2, 1104, QStringLiteral("Send Appointment"), QStringLiteral("VCal"), QStringLiteral("clsActionVCal"),
             QStringLiteral("Send An Appointment")),
        Item(2, 1103, QStringLiteral("Wait For Validation"), QStringLiteral("Validation"),
             QStringLiteral("clsActionValidation"), QStringLiteral("Wait For Validation")),
        Item(2, 1102, QStringLiteral("Forward Original Message"), QStringLiteral("Forward"),
             QStringLiteral("clsActionForward"), QStringLiteral("Forward Original Message")),
        Item(3, 1021, QStringLiteral("Update Exchange Contact"), QStringLiteral("ExchangeContact"),
             QStringLiteral("clsActionExContact"), QStringLiteral("Update Exchange Contact")),
        Item(3, 1022, QStringLiteral("Create Exchange Appointment"), QStringLiteral("ExchangeAppointment"),
             QStringLiteral("clsActionExAppoint"), QStringLiteral("Create Exchange Appointment"), 1021),
        Item(3, 1023, QStringLiteral("Create Exchange Task"), QStringLiteral("ExchangeTask"),
             QStringLiteral("clsActionExTask"), QStringLiteral("Create Exchange Task"), 1021),
        Item(3, 1024, QStringLiteral("Create Exchange Note"), QStringLiteral("ExchangeNote"),
             QStringLiteral("clsActionExNote"), QStringLiteral("Create Exchange Note"), 1021),
        Item(3, 1025, QStringLiteral("Set/Get Out Of Office Status"), QStringLiteral("ExchangeOutOfOffice"),
             QStringLiteral("clsActionExOOFS"), QStringLiteral("Get/Set Exchange Out Of Office Status"), 1021),
        Item(4, 1202, QStringLiteral("Get Dynamics Item"), QStringLiteral("CRMGet.MSD"),
             QStringLiteral("clsActionCRMGet"), QStringLiteral("CRM Get Entity"), 1203),
        Item(4, 1201, QStringLiteral("Update Dynamics "), QStringLiteral("CRMUpdate.MSD"),
             QStringLiteral("clsActionCRMUpdate"), QStringLiteral("CRM Update"), 1203),
        Item(4, 1203, QStringLiteral("Upload To Dynamics"), QStringLiteral("CRMAttach.MSD"),
             QStringLiteral("clsActionCRMAttach"), QStringLiteral("Upload To CRM"), 1203),
        Item(4, 1212, QStringLiteral("Get SFDC Item"), QStringLiteral("CRMGet.SFDC"),
             QStringLiteral("clsActionCRMGet"), QStringLiteral("CRM Get Entity"), 1213),
        Item(4, 1211, QStringLiteral("Update SFDC "), QStringLiteral("CRMUpdate.SFDC"),
             QStringLiteral("clsActionCRMUpdate"), QStringLiteral("CRM Update"), 1213),
        Item(4, 1213, QStringLiteral("Upload To SFDC"), QStringLiteral("CRMAttach.SFDC"),
             QStringLiteral("clsActionCRMAttach"), QStringLiteral("Upload To CRM"), 1213),
        Item(5, 1251, QStringLiteral("Get SharePoint Item"), QStringLiteral("SharePointGetItem"),
             QStringLiteral("clsActionSPGetItem"), QStringLiteral("Get Item From SharePoint List"), 1250),
        Item(5, 1253, QStringLiteral("Update SharePoint List Item"), QStringLiteral("SharePointUpdateItem"),
             QStringLiteral("clsActionSPUpdateItem"), QStringLiteral("Update Item In SharePoint List"), 1250),
        Item(5, 1252, QStringLiteral("Upload Files Or Attachments"), QStringLiteral("SharePointUpload"),
             QStringLiteral("clsActionSPUpload"), QStringLiteral("Upload To SharePoint"), 1250),
        Item(6, 1011, QStringLiteral("Update Azure SQL Database"), QStringLiteral("Azure"),
             QStringLiteral("clsActionAZ"), QStringLiteral("Update An Azure Database"), 1261),
        Item(6, 1261, QStringLiteral("Get/Update Table"), QStringLiteral("AzureTable"),
             QStringLiteral("clsActionAzureTable"), QStringLiteral("Get/Update Azure Table Entity"), 1261),
        Item(6, 1262, QStringLiteral("Get/Update Blob"), QStringLiteral("AzureBlob"),
             QStringLiteral("clsActionAzureBlob"), QStringLiteral("Get/Update Azure Blob"), 1261),
        Item(7, 1300, QStringLiteral("Process Attachments"), QStringLiteral("Attachments"),
             QStringLiteral("clsActionAttach"), QStringLiteral("Process Attachments")),
        Item(11, 1012, QStringLiteral("Upload To Amazon S3"), QStringLiteral("S3Upload"),
             QStringLiteral("clsActionS3Upload"), QStringLiteral("Upload To Amazon S3")),
        Item(8, 1401, QStringLiteral("Print Message"), QStringLiteral("Print"), QStringLiteral("clsActionPrint"),
             QStringLiteral("Print Message")),
        Item(8, 1403, QStringLiteral("Save As PDF"), QStringLiteral("SaveAsPDF"), QStringLiteral("clsActionSaveAsPDF"),
             QStringLiteral("Save As PDF")),
        Item(8, 1400, QStringLiteral("Run A Report"), QStringLiteral("Report"), QStringLiteral("clsActionReport"),
             QStringLiteral("Run A Report")),
        Item(8, 1402, QStringLiteral("Send A Fax"), QStringLiteral("Fax"), QStringLiteral("clsActionFax"),
             QStringLiteral("Send A Fax")),
        Item(9, 1500, QStringLiteral("Post To Web Page"), QStringLiteral("HTTPPost"),
             QStringLiteral("clsActionHTTPPost"), QStringLiteral("Post To Web Page")),
        Item(9, 1502, QStringLiteral("Read A Web Page"), QStringLiteral("HTTPGet"), QStringLiteral("clsActionHTTPGet"),
             QStringLiteral("Read A Web Page"), 1500),
        Item(9, 1506, QStringLiteral("Call A Web Service"), QStringLiteral("HTTPSoap"),
             QStringLiteral("clsActionHTTPSoap"), QStringLiteral("Call A Web Service")),
        Item(9, 1503, QStringLiteral("DNS Lookup"), QStringLiteral("DNS"), QStringLiteral("clsActionDNS"),
             QStringLiteral("DNS Lookup")),
        Item(9, 1504, QStringLiteral("Update WebDav Resource"), QStringLiteral("WEBDAV"),
             QStringLiteral("clsActionWebDav"), QStringLiteral("Update WebDav Resource")),
        Item(9, 1501, QStringLiteral("Upload To FTP Server"), QStringLiteral("FTP"), QStringLiteral("clsActionFTP"),
             QStringLiteral("Upload FTP Files")),
        Item(9, 1505, QStringLiteral("Post To A Jabber/XMPP Server"), QStringLiteral("Jabber"),
             QStringLiteral("clsActionJabber"), QStringLiteral("Post To A Jabber Server")),
        Item(10, 1801, QStringLiteral("Post To Twitter"), QStringLiteral("Twitter"), QStringLiteral("clsActionTwitter"),
             QStringLiteral("Post To Twitter")),
        Item(12, 1600, QStringLiteral("Run An ") + product + QStringLiteral("Script"), QStringLiteral("Script"),
             QStringLiteral("clsActionScript"), QStringLiteral("Run An ") + product + QStringLiteral(" Script")),
        Item(12, 1601, QStringLiteral("Run A Program"), QStringLiteral("Run"), QStringLiteral("clsActionRun"),
             QStringLiteral("Run A Program")),
        Item(12, 1602, QStringLiteral("Control A Service"), QStringLiteral("Service"),
             QStringLiteral("clsActionService"), QStringLiteral("Control A Windows Service")),
        Item(13, 1802, QStringLiteral("Set Variable"), QStringLiteral("Set"), QStringLiteral("clsActionSetVariable"),
             QStringLiteral("Set Variable")),
        Item(13, 1003, QStringLiteral("Read/Write Text File"), QStringLiteral("TextFile"),
             QStringLiteral("clsActionText"), QStringLiteral("Read/Write Text File")),
        Item(13, 1700, QStringLiteral("Send Popup Message"), QStringLiteral("Popup"), QStringLiteral("clsActionPopup"),
             QStringLiteral("Send Popup Message")),
        Item(14, 1803, QStringLiteral("If Block"), QStringLiteral("If"), QStringLiteral("clsActionLogical"),
             QStringLiteral("If Block")),
        Item(14, 1804, QStringLiteral("Else"), QStringLiteral("Else"), QStringLiteral("clsActionLogical"),
             QStringLiteral("Else")),
        Item(14, 1805, QStringLiteral("End If"), QStringLiteral("EndIf"), QStringLiteral("clsActionLogical"),
             QStringLiteral("End If")),
        Item(14, 1808, QStringLiteral("GoTo"), QStringLiteral("GoTo"), QStringLiteral("clsActionLogical"),
             QStringLiteral("Go To Label")),
        Item(14, 1807, QStringLiteral("Label"), QStringLiteral("Label"), QStringLiteral("clsActionLogical"),
             QStringLiteral("Label")),
        Item(14, 1810, QStringLiteral("Pass Value To Trigger"), QStringLiteral("PassTo"),
             QStringLiteral("clsActionPassTo"), QStringLiteral("Pass Value To Trigger")),
        Item(14, 1809, QStringLiteral("End Processing"), QStringLiteral("End"), QStringLiteral("clsActionLogical"),
             QStringLiteral("End Processing")),
        Item(14, 1806, QStringLiteral("Comment"), QStringLiteral("Comment"), QStringLiteral("clsActionComment"),
             QStringLiteral("Comment")),
    };
}

QList<ActionKind> ActionHiddenKinds()
{
    return {
        Hidden(QStringLiteral("Dropbox"), QStringLiteral("clsActionDropbox"), QStringLiteral("Save To Dropbox")),
        Hidden(QStringLiteral("Facebook"), QStringLiteral("clsActionFacebook"), QStringLiteral("Post To Facebook")),
        Hidden(QStringLiteral("Amazon"), QStringLiteral("clsActionDBAmazon"), QStringLiteral("Update Amazon")),
        Hidden(QStringLiteral("QuickBooks"), QStringLiteral("clsActionDBQB"), QStringLiteral("Update Quickbooks")),
        Hidden(QStringLiteral("COM"), QStringLiteral("clsActionCOM"), QStringLiteral("COM Object")),
    };
}

int ActionIcon(const QString &Key)
{
    static const QHash<QString, int> icons = [] {
        QHash<QString, int> byKey;
        for (const ActionKind &kind : ActionCatalogue())
            byKey.insert(kind.Key.toLower(), kind.Icon);
        return byKey;
    }();
    return icons.value(Key.toLower(), 0);
}
