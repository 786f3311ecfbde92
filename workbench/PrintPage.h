#pragma once
#include <QString>

class QWidget;

// Prints an HTML page on a printer the user picks; with no printer set up,
// to a PDF file the user names. DocumentName is the job's name and the
// file's suggested name. False when cancelled.
bool PrintPage(QWidget *Parent, const QString &Html, const QString &DocumentName);
