'use strict';

// A gate as a loop on the npm package serialport.
//
// usage: serialport_gate.js PORT CARDS
//
// The package's delimiter parser cuts lines at the carriage return; the card is looked up in a set, and the
// open or the refuse command is written. Prints "ready" when the port is open.

const fs = require('fs');
const { SerialPort, DelimiterParser } = require('serialport');
const { answer } = require('./decision.js');

const [path, cardsPath] = process.argv.slice(2);
const cards = new Set(fs.readFileSync(cardsPath, 'latin1').split('\n').filter(Boolean));

const port = new SerialPort({ path, baudRate: 9600 });
port.on('open', () => console.log('ready'));
port.on('error', (error) => {
  console.error(String(error));
  process.exit(1);
});
port.on('close', () => process.exit(0));
port.pipe(new DelimiterParser({ delimiter: '\r' })).on('data', (bytes) => {
  const command = answer(bytes.toString('latin1'), cards);
  if (command !== undefined) {
    port.write(command);
  }
});
