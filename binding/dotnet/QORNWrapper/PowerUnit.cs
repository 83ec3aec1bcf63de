namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>The unit of a <see cref="Spectrum"/>. Any value other than 0 selects volts.</summary>
    public enum PowerUnit
    {
        /// <summary>20 log10 of the magnitude in volts.</summary>
        PowerUnitDBV = 0,

        /// <summary>The magnitude in volts.</summary>
        PowerUnitVolt = 1,
    }
}
