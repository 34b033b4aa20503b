// A networked gate with a display: members are greeted and let in, others are refused.
// tnv5 run d24.js /dev/ttyUSB0
const members = {'12345678': 'Anna Berg'};

const connector = new TDeviceConnector();
connector.ConnectorType = podComPort;
connector.ComPort = OpenPort(Arguments[0], 9600);

const gate = new TTurnStylerDeviceD24();
gate.Connector = connector;
gate.OnError = (sender, text) => print('trouble: ' + text);
gate.OnCheckSQL = (sender, ip, device, type, card, status, img, mode, message, result) => {
    if (mode !== 0) {
        result.value = 1;
        return;
    }
    const name = members[card];
    message.value = name === undefined ? '|Not a member|||||' : '|Welcome|' + name + '||||';
    result.value = name === undefined ? 0 : 1;
    print(device + ': ' + (name === undefined ? 'a stranger' : name));
};
