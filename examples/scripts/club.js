// A whole club: classic gates, networked gates and lamps on one bus, a scale at the bar. The books decide.
//
//     tnv5 run club.js --db club.sqlite /dev/gates /dev/bus /dev/scale
const [gatePort, busPort, scalePort] = Arguments;
const trouble = where => (sender, text) => print(where + ': ' + text);

// Who may come in where.
SetGate('01A', 'hall', 'in');
SetGate('02A', 'hall', 'out');
SetGate('001T', 'sauna', 'in');

// The hall: two turnstiles on a line of classic controllers.
const hall = new TTurnStylerDevice();
hall.DeviceList = ['01A', '02A'];
hall.OnError = trouble('hall');
hall.OnCheckSQL = (sender, device, card, status, img, mode, result) => {
    result.value = Decide(device, card, mode);
};
hall.OnGetImg = (sender, device, img) => { img.value = null; }; // this club has no pictures
hall.ComPort = OpenPort(gatePort, 9600);

// The bus: a connector, and everything on it hears all lines.
const bus = new TDeviceConnector();
bus.ConnectorType = podComPort;
bus.OnError = trouble('bus');
bus.ComPort = OpenPort(busPort, 9600);

const sauna = new TTurnStylerDeviceD24();
sauna.Connector = bus;
sauna.OnError = trouble('sauna');
sauna.OnCheckSQL = (sender, ip, device, type, card, status, img, mode, message, result) => {
    result.value = Decide(device, card, mode);
    message.value = result.value === 1 ? '|Welcome|||||' : '|Please ask at the desk|||||';
};

const lamps = new TSwitchDevice();
lamps.Connector = bus;
lamps.OnError = trouble('lamps');
lamps.OnNewItem = (sender, device, relay, status, now, wanted) => { wanted.value = 'OFF'; };

bus.OnGetData = (sender, line) => {
    sauna.p_hw_ProtocolIn(line);
    lamps.p_hw_ProtocolIn(line);
};

// The bar: a kilogram of nuts costs 12.50.
const scale = new TScalesDevice();
scale.ScalesType = 2;
scale.OnError = trouble('scale');
scale.OnWeight = (sender, grams) => {
    if (grams > 0) {
        print('nuts: ' + grams + ' g, ' + (grams * 12.5 / 1000).toFixed(2));
    }
};
scale.ComPort = OpenPort(scalePort, 9600);
scale.SendInterval = 500;
print('The club is open.');
