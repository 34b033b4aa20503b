'use strict';

// The decision about a card line, shared by the JavaScript peers.

const ZERO = '0'.charCodeAt(0);

function checksum(command) {
  let value = command.charCodeAt(0) ^ Number(command.slice(1, 3)) ^ command.charCodeAt(3);
  for (let i = 4; i < 7; i++) {
    value ^= command.charCodeAt(i) - ZERO;
  }
  return value.toString(16).toUpperCase().padStart(2, '0');
}

/** The command that answers a line such as "$01AR12345678"; undefined when it is no card. */
function answer(line, cards) {
  if (line[0] !== '$' || line[4] !== 'R') {
    return undefined;
  }
  const command = line.slice(0, 4) + (cards.has(line.slice(5)) ? '103' : '000');
  return command + checksum(command) + '\r';
}

module.exports = { answer };
