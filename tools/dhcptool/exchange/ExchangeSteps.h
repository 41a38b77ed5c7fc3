#pragma once

#include "exchange/Exchange.h"

namespace DhcpTool {

/// Whether a message of the exchange has the transaction id `xid`.
bool hasTransaction(const Exchange& exchange, U32 xid);

/// Whether a message of the exchange's client and transaction belongs to it. If not, it starts another exchange: the
/// client uses the id again.
bool takesMessage(const Exchange& exchange, const Event& event);

/// Whether a message of the exchange's client with a new transaction id continues the exchange.
bool isContinuedBy(const Exchange& exchange, const Event& event);

/// Adds a message that belongs to the exchange.
void addMessage(Exchange& exchange, const Event& event);

}  // namespace DhcpTool
