// A connector: shows what the boards of a line say, and changes over relay 1 of the board that is named.
// tnv5 run connector.js /dev/ttyUSB0 000A
const board = Arguments[1];

const connector = new TDeviceConnector();
connector.ConnectorType = podComPort;
connector.OnError = (sender, text) => print('trouble: ' + text);
connector.OnGetData = (sender, line) => print('heard: ' + line);
connector.ComPort = OpenPort(Arguments[0], 9600);

connector.SendCommand('RL0.0.0.0:' + board + '1'); // changes the relay over
