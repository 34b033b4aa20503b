// Lamps: switches relay 1 of a board on for half an hour, or for as many minutes as are given, then off, and shows what
// the boards report.
// tnv5 run switch.js /dev/ttyUSB0 000A 30
const board = Arguments[1];
const paid = Number(Arguments[2] || 30) * SecPerMin * 1000;
let ends = 0; // known once the relay is on
// The component's own end of a job moves on by a minute again and again where the answer to mode 2 is no: the time is
// watched here. A day more, so that it is not over in any time zone.
const until = UnixStartDate + (Date.now() + paid) / (1000 * SecPerDay) + 1;

const connector = new TDeviceConnector();
connector.ConnectorType = podComPort;
connector.ComPort = OpenPort(Arguments[0], 9600);

const lamps = new TSwitchDevice();
lamps.Connector = connector;
lamps.OnError = (sender, text) => print('trouble: ' + text);
lamps.OnCheckStatus = (sender, name, device, relay, wanted, now) => { // every few seconds
    if (relay === '') {
        return;
    }
    print(`relay ${relay} of ${device}: ${wanted} is wanted, it is ${now}`);
    if (device !== board || relay !== '1' || wanted !== 'ON' || now !== 'ON') {
        return;
    }
    ends = ends || Date.now() + paid;
    if (Date.now() >= ends) {
        lamps.p_hw_CheckStatus('0.0.0.0', board, '1', 'OFF', until);
    }
};
lamps.OnNewItem = (sender, device, relay, status, now, wanted) => { wanted.value = 'OFF'; };
lamps.OnCheckSQL = (sender, device, relay, status, now, mode, result) => { result.value = mode === 2 ? 0 : 1; };
lamps.p_hw_CheckStatus('0.0.0.0', board, '1', 'ON', until);
