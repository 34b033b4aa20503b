// A scale: tells its family, then shows each new weight.
// tnv5 run scales.js /dev/ttyUSB0 2
const families = [];
const scales = new TScalesDevice();
scales.GetScalesList(families);
print('family ' + Arguments[1] + ': ' + families[Arguments[1]]);

scales.ScalesType = Arguments[1];
scales.OnError = (sender, text) => print('trouble: ' + text);
scales.OnWeight = (sender, weight) => print('weight ' + weight);
scales.ComPort = OpenPort(Arguments[0], 4800);
scales.SendInterval = 500; // asks by itself from now on
