-- The six functions that requests call. They run as fernhollow_reader, so that the role of a request needs
-- no right to read; each looks at one account only, the one that it was given.
--
-- PL/pgSQL because it keeps its plans for the life of a connection: the same functions in plain SQL are
-- planned anew at each call, which costs more than most of them take to run.
--
-- A range of days holds at most 366. Its bounds are sums of dates, never of texts.

CREATE FUNCTION public.get_account_today_total(p_email text, p_day date) RETURNS bigint
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
AS $$
BEGIN
    RETURN (
        SELECT coalesce(sum(c.count), 0)::bigint
        FROM public.device_day_counts AS c
        WHERE c.customer_email = p_email AND c.day = p_day
    );
END
$$;

CREATE FUNCTION public.get_account_daily_totals(p_email text, p_days integer, p_end_day date)
    RETURNS TABLE (day date, total_count bigint)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    ROWS 30
AS $$
BEGIN
    RETURN QUERY
        SELECT c.day, sum(c.count)::bigint
        FROM public.device_day_counts AS c
        WHERE c.customer_email = p_email
            AND c.day > p_end_day - least(greatest(p_days, 0), 366)
            AND c.day <= p_end_day
        GROUP BY c.day
        ORDER BY c.day;
END
$$;

CREATE FUNCTION public.get_account_hourly_totals(p_email text, p_day date)
    RETURNS TABLE (hour integer, total_count bigint)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    ROWS 24
AS $$
BEGIN
    RETURN QUERY
        SELECT c.hour::integer, sum(c.count)::bigint
        FROM public.device_hour_counts AS c
        WHERE c.customer_email = p_email AND c.day = p_day
        GROUP BY c.hour
        ORDER BY c.hour;
END
$$;

-- A registry may lag behind the counts: the identifier then stands for the name, which is never null.
--
-- A kept plan is made for an account of average size. A nested loop would suit that one and look up a name
-- for each row of a large one; a hash of the names costs either next to nothing.
CREATE FUNCTION public.get_account_app_hourly_totals(p_email text, p_day date)
    RETURNS TABLE (hour integer, bundle_id text, app_name text, total_count bigint)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET enable_nestloop = off
    ROWS 100
AS $$
BEGIN
    RETURN QUERY
        SELECT t.hour::integer, t.bundle_id, coalesce(nullif(r.app_name, ''), t.bundle_id), t.total_count
        FROM (
            SELECT c.hour, c.bundle_id, sum(c.count)::bigint AS total_count
            FROM public.device_app_hour_counts AS c
            WHERE c.customer_email = p_email AND c.day = p_day
            GROUP BY c.bundle_id, c.hour
        ) AS t
        LEFT JOIN public.device_app_registry AS r
            ON r.customer_email = p_email AND r.bundle_id = t.bundle_id;
END
$$;

CREATE FUNCTION public.get_account_app_daily_totals(p_email text, p_days integer, p_end_day date)
    RETURNS TABLE (day date, bundle_id text, app_name text, total_count bigint)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET enable_nestloop = off
    ROWS 300
AS $$
BEGIN
    RETURN QUERY
        SELECT t.day, t.bundle_id, coalesce(nullif(r.app_name, ''), t.bundle_id), t.total_count
        FROM (
            SELECT c.day, c.bundle_id, sum(c.count)::bigint AS total_count
            FROM public.device_app_hour_counts AS c
            WHERE c.customer_email = p_email
                AND c.day > p_end_day - least(greatest(p_days, 0), 366)
                AND c.day <= p_end_day
            GROUP BY c.day, c.bundle_id
        ) AS t
        LEFT JOIN public.device_app_registry AS r
            ON r.customer_email = p_email AND r.bundle_id = t.bundle_id;
END
$$;

-- Clients list the devices in this order, and read the time in this form only: UTC, seconds, Z.
CREATE FUNCTION public.get_account_devices(p_email text)
    RETURNS TABLE (device_id text, device_name text, last_seen_at text)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    ROWS 4
AS $$
BEGIN
    RETURN QUERY
        SELECT d.device_id, d.device_name, to_char(d.last_seen_at AT TIME ZONE 'UTC', 'YYYY-MM-DD"T"HH24:MI:SS"Z"')
        FROM public.devices AS d
        WHERE d.customer_email = p_email
        ORDER BY d.last_seen_at DESC, d.device_name, d.device_id;
END
$$;

-- A function's new owner must be able to create in its schema, for this moment only.
GRANT CREATE ON SCHEMA public TO fernhollow_reader;
DO $$
DECLARE
    called regprocedure;
BEGIN
    FOREACH called IN ARRAY ARRAY[
        'public.get_account_today_total(text, date)',
        'public.get_account_daily_totals(text, integer, date)',
        'public.get_account_hourly_totals(text, date)',
        'public.get_account_app_hourly_totals(text, date)',
        'public.get_account_app_daily_totals(text, integer, date)',
        'public.get_account_devices(text)']::regprocedure[]
    LOOP
        EXECUTE format('REVOKE ALL ON FUNCTION %s FROM PUBLIC, anon', called);
        IF to_regrole('authenticated') IS NOT NULL THEN
            EXECUTE format('REVOKE ALL ON FUNCTION %s FROM authenticated', called);
        END IF;
        EXECUTE format('GRANT EXECUTE ON FUNCTION %s TO anon', called);
        EXECUTE format('ALTER FUNCTION %s OWNER TO fernhollow_reader', called);
    END LOOP;
END
$$;
REVOKE CREATE ON SCHEMA public FROM fernhollow_reader;
