#include "PrintPage.h"

#include <QFileDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QTextDocument>

bool PrintPage(QWidget *Parent, const QString &Html, const QString &DocumentName)
{
    QPrinter printer;
    printer.setDocName(DocumentName);
    if (QPrinterInfo::availablePrinters().isEmpty()) {
        const QString path = QFileDialog::getSaveFileName(Parent, QStringLiteral("Print"), DocumentName + QStringLiteral(".pdf"),
                                                          QStringLiteral("PDF Files (*.pdf)"));
        if (path.isEmpty())
            return false;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path);
    } else {
        QPrintDialog dialog(&printer, Parent);
        if (dialog.exec() != QDialog::Accepted)
            return false;
    }
    QTextDocument page;
    page.setHtml(Html);
    page.print(&printer);
    return true;
}
