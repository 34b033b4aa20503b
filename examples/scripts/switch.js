// Lamps: switches relay 1 of a board on for half an hour, and shows what the boards report.
// tnv5 run switch.js /dev/ttyUSB0 000A
const minute = MinDayFraction;
const board = Arguments[1];
const until = UnixStartDate + Date.now() / (1000 * SecPerDay) + 1 + 30 * minute; // a day more: any time zone

const connector = new TDeviceConnector();
connector.ConnectorType = podComPort;
connector.ComPort = OpenPort(Arguments[0], 9600);

const lamps = new TSwitchDevice();
lamps.Connector = connector;
lamps.OnError = (sender, text) => print('trouble: ' + text);
lamps.OnCheckStatus = (sender, name, device, relay, wanted, now) => {
    if (relay !== '') {
        print(`relay ${relay} of ${device}: ${wanted} is wanted, it is ${now}`);
    }
};
lamps.OnNewItem = (sender, device, relay, status, now, wanted) => { wanted.value = 'OFF'; };
lamps.OnCheckSQL = (sender, device, relay, status, now, mode, result) => { result.value = mode === 2 ? 0 : 1; };
lamps.p_hw_CheckStatus('0.0.0.0', board, '1', 'ON', until);
