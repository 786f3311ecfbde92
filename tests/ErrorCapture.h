#pragma once
#include "foundation/Startup.h"

#include <QStringList>

// Collects the messages that LogError shows while it lives; the default sink
// is back when it ends. Test classes hold one as a member and clear it in
// init().
class ErrorCapture : public QStringList
{
public:
    ErrorCapture()
    {
        SetErrorSink([this](const QString &, const QString &text) { append(text); });
    }
    ~ErrorCapture() { SetErrorSink(nullptr); }
    ErrorCapture(const ErrorCapture &) = delete;
    ErrorCapture &operator=(const ErrorCapture &) = delete;
};
