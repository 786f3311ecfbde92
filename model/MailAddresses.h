#pragma once
#include <QString>
#include <QStringList>

// Lists of mail addresses as users and folders keep them: one text with the
// addresses separated, each address possibly a wildcard pattern, and a part
// without "@" standing for a local part at the default domain.

// The addresses of a list split at any of Separators, trimmed, without the
// empty parts.
QStringList SplitAddresses(const QString &List, const QString &Separators = QStringLiteral(","));

// The addresses, each without "@" completed with "@" and the default domain.
QStringList QualifiedAddresses(const QStringList &Addresses, const QString &DefaultDomain);

// True when the address, trimmed, like-matches one of the patterns; case is
// ignored.
bool LikeAnyAddress(const QString &Address, const QStringList &Patterns);

// True when one of the addresses has exactly this domain after its "@",
// both compared lower-cased.
bool AnyAddressInDomain(const QStringList &Addresses, const QString &Domain);
