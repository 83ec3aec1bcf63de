// Prints the spectrum of a tone of 0.5 V at bin 3 of 16.
using Morvenhal.RF.KST.QORNWrapper;
using Morvenhal.RF.KST.Shared;

var samples = new IQArray(16);
for (int n = 0; n < samples.Count; ++n)
{
    double phase = 2 * Math.PI * 3 * n / samples.Count;
    samples[n] = new IQ { I = (float)(0.5 * Math.Cos(phase)), Q = (float)(0.5 * Math.Sin(phase)) };
}

using var spectrum = new Spectrum(samples.Count, QornWindowType.WindowHann);
spectrum.SetUnit(PowerUnit.PowerUnitVolt);
var volts = new FloatArray();
spectrum.Apply(volts, samples);
for (int k = 0; k < volts.Count; ++k) Console.WriteLine(FormattableString.Invariant($"{k - 8,3} {volts[k]:F3}"));
