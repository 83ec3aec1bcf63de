using System;
using System.Diagnostics;

namespace Morvenhal.RF.KST.Shared
{
    /// <summary>How grave an <see cref="Error"/> is.</summary>
    public enum Severity
    {
        /// <summary>For information alone.</summary>
        Information = 0,

        /// <summary>A result is missing or wrong.</summary>
        Error = 1,
    }

    /// <summary>An entry for the log of the application.</summary>
    public class Error
    {
        /// <summary>An entry that is not logged yet.</summary>
        /// <param name="message">The text.</param>
        /// <param name="source">The number of the part of the application that it comes from.</param>
        /// <param name="severity">The number of its <see cref="Shared.Severity"/>.</param>
        public Error(string message, int source, int severity)
        {
            Message = message;
            Source = source;
            Severity = (Severity)severity;
        }

        /// <summary>Raised by each entry that is logged, on the thread that logs it.</summary>
        public static event Action<Error>? Logged;

        /// <summary>The text.</summary>
        public string Message { get; }

        /// <summary>The number of the part of the application that the entry comes from.</summary>
        public int Source { get; }

        /// <summary>How grave it is.</summary>
        public Severity Severity { get; }

        /// <summary>Writes the entry to the trace listeners and raises <see cref="Logged"/>.</summary>
        public void Log()
        {
            Trace.WriteLine($"{Severity} {Source}: {Message}");
            Logged?.Invoke(this);
        }
    }
}
