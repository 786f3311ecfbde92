#pragma once
#include <QString>

class clsAccountTrigger;

// Template tokens: "%name%" in any text a user writes for an action.

// The text with its tokens replaced, in this order, each token found and
// replaced without case: the message tokens of the current message
// (CurrentMessage()), its extracted fields, then, while a "%" is left, its
// account's variables, the date tokens and its organization's constants.
// A value is placed as it stands and is only read again by later steps.
// Tokens that match nothing stay; a text without "%" comes back at once.
//
// Settled behaviour kept on purpose: %msg_html% in a text shorter than 105
// characters makes the whole text the HTML; %Time% is always "00:00:00";
// %MonthNumber% and %FreeDiscSpace% give empty texts.
QString ExpandTokens(const QString &Text);

// True when the text is not empty and holds a "%".
bool HasTokens(const QString &Text);

// The message tokens offered to users, then the date tokens, comma separated.
QString MessageTokenList();

// The tokens valid in the trigger's texts, comma separated: the message
// tokens (unless WithoutBuiltIn), the trigger's fields (unless
// WithoutFields), its account's variables, its organization's constants
// (WithConstants), and the variables of its Set actions not listed yet.
QString FieldTokenList(clsAccountTrigger *Trigger, bool WithoutFields = false, bool WithoutBuiltIn = false,
                       bool WithConstants = false);
